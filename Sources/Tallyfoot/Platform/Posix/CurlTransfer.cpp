#include "Tallyfoot/Platform/Posix/CurlTransfer.h"

#include "Tallyfoot/Platform/Posix/FileDescriptor.h"
#include "Tallyfoot/Platform/Posix/HTTPAddress.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <utility>

namespace tallyfoot {

namespace {

constexpr int maximumRedirects = 5;
constexpr std::chrono::hours longestSilence{24};
constexpr std::string_view blanks = " \t";

// What would end the line early, and with it smuggle in another one.
bool breaksLine(std::string_view text) { return text.find_first_of(std::string_view("\r\n\0", 3)) != text.npos; }

std::string line(const std::string& name, const std::string& value) {
    // libcurl takes "name:" as the wish to have no such header; ";" sends an empty one.
    if (value.find_first_not_of(blanks) == value.npos) return name + ";";
    return name + ": " + value;
}

void setTrustedCertificates(CURL* handle) {
    if (const char* file = std::getenv("SSL_CERT_FILE"); file != nullptr && *file != '\0')
        curl_easy_setopt(handle, CURLOPT_CAINFO, file);
    if (const char* folder = std::getenv("SSL_CERT_DIR"); folder != nullptr && *folder != '\0')
        curl_easy_setopt(handle, CURLOPT_CAPATH, folder);
}

curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address) noexcept {
    return FileDescriptor(::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol)).release();
}

} // namespace

CurlTransfer::CurlTransfer(URLRequest request, DataTaskCompletion completion)
    : request_(std::move(request)), completion_(std::move(completion)) {
    request_.timeout = std::min<std::chrono::seconds>(request_.timeout, longestSilence);
}

bool CurlTransfer::prepare(TimePoint now) {
    const auto address = httpAddress(request_.url);
    handle_.reset(curl_easy_init());
    if (!handle_ || !address || breaksLine(request_.method)) return false;
    answer_.clear();
    error_[0] = '\0';
    isTooLong_ = false;
    headerBytes_ = 0;
    bodyOffset_ = 0;
    transferred_ = 0;
    lastActivity_ = now;
    if (!setHeaders() || curl_easy_setopt(handle(), CURLOPT_URL, address->url.c_str()) != CURLE_OK) return false;
    if (address->isLoopback()) curl_easy_setopt(handle(), CURLOPT_PROXY, "");
    setOptions();
    return true;
}

void CurlTransfer::setOptions() {
    auto* const curl = handle();
    const auto size = request_.bodySize();
    const bool posts = request_.method == "POST" || size > 0;
    if (posts) {
        curl_easy_setopt(curl, CURLOPT_POST, 1L);
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(size));
        curl_easy_setopt(curl, CURLOPT_READFUNCTION, &CurlTransfer::sendBody);
        curl_easy_setopt(curl, CURLOPT_READDATA, this);
        // For a connection that proves dead: the body starts anew on another one.
        curl_easy_setopt(curl, CURLOPT_SEEKFUNCTION, &CurlTransfer::seekBody);
        curl_easy_setopt(curl, CURLOPT_SEEKDATA, this);
    }
    if (request_.method != (posts ? "POST" : "GET"))
        curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, request_.method.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers_.get());
    // The second version would send header names in lower case, whatever the request says.
    curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(curl, CURLOPT_HTTP09_ALLOWED, 0L);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    setTrustedCertificates(curl);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_OPENSOCKETFUNCTION, &openSocket);
    // Silence is measured by the session, to the millisecond and whatever the phase; libcurl's own
    // limits must only not be shorter.
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(request_.timeout.count()) + 1);
    // A name server that does not answer must not hold the session's thread.
    curl_easy_setopt(curl, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(curl, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error_.data());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &CurlTransfer::receiveBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &CurlTransfer::receiveHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(curl, CURLOPT_PRIVATE, this);
}

bool CurlTransfer::setHeaders() {
    CurlList list;
    const auto append = [&list](const char* text) {
        auto* const longer = curl_slist_append(list.get(), text);
        if (longer == nullptr) return false;
        (void)list.release();
        list.reset(longer);
        return true;
    };
    // Empty, or libcurl waits a second for leave to send a large body.
    if (!append("Expect:")) return false;
    for (const auto& [name, value] : request_.headers) {
        if (name.empty() || breaksLine(name) || breaksLine(value)) continue;
        if (!append(line(name, value).c_str())) return false;
    }
    headers_ = std::move(list);
    return true;
}

// Copies from where the pieces lie into libcurl's send buffer.
std::size_t CurlTransfer::sendBody(char* into, std::size_t size, std::size_t count, void* transfer) noexcept {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    const std::size_t room = size * count;
    std::size_t filled = 0;
    std::size_t skipped = self.bodyOffset_;
    for (const auto& piece : self.request_.body) {
        if (skipped >= piece.size()) {
            skipped -= piece.size();
            continue;
        }
        filled += piece.copy(into + filled, room - filled, std::exchange(skipped, 0));
    }
    self.bodyOffset_ += filled;
    return filled;
}

int CurlTransfer::seekBody(void* transfer, curl_off_t offset, int origin) noexcept {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    if (origin != SEEK_SET || offset < 0) return CURL_SEEKFUNC_FAIL;
    self.bodyOffset_ = static_cast<std::size_t>(offset);
    return CURL_SEEKFUNC_OK;
}

std::size_t CurlTransfer::receiveBody(char* bytes, std::size_t size, std::size_t count, void* transfer) noexcept {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    const auto length = size * count;
    if (length > maximumAnswer - self.answer_.size()) {
        self.isTooLong_ = true;
        return 0;
    }
    try {
        self.answer_.append(bytes, length);
    } catch (const std::exception&) {
        return 0;
    }
    return length;
}

std::size_t CurlTransfer::receiveHeader(char*, std::size_t size, std::size_t count, void* transfer) noexcept {
    auto& self = *static_cast<CurlTransfer*>(transfer);
    self.headerBytes_ += size * count;
    self.isTooLong_ = self.headerBytes_ > maximumHeaders;
    return self.isTooLong_ ? 0 : size * count;
}

CurlTransfer::TimePoint CurlTransfer::deadline(TimePoint now) {
    curl_off_t sent = 0;
    curl_off_t received = 0;
    curl_easy_getinfo(handle(), CURLINFO_SIZE_UPLOAD_T, &sent);
    curl_easy_getinfo(handle(), CURLINFO_SIZE_DOWNLOAD_T, &received);
    const auto transferred = sent + received + static_cast<curl_off_t>(headerBytes_);
    if (transferred != transferred_) {
        transferred_ = transferred;
        lastActivity_ = now;
    }
    return lastActivity_ + request_.timeout;
}

// Neither the token nor the records leave for a host that nobody configured, or under another name. A
// relative target has the user of the address that it is relative to.
bool CurlTransfer::followsRedirect(CURLcode code) {
    long status = 0;
    char* target = nullptr;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(handle(), CURLINFO_REDIRECT_URL, &target);
    if (code != CURLE_OK || (status != 307 && status != 308) || target == nullptr) return false;
    const auto from = httpAddress(request_.url);
    const auto to = httpAddress(target);
    if (!from || !to || to->origin != from->origin || redirects_ == maximumRedirects) return false;
    if (!to->user.empty() && to->user != from->user) return false;
    ++redirects_;
    request_.url = to->url;
    return true;
}

Result<std::string> CurlTransfer::outcome(CURLcode code) {
    if (code == CURLE_OK) return std::move(answer_);
    if (isTooLong_) return Error{"The server's answer is too long"};
    return Error{error_[0] != '\0' ? error_.data() : curl_easy_strerror(code)};
}

Result<std::string> CurlTransfer::timedOut() const {
    return Error{"The server was silent for " + std::to_string(request_.timeout.count()) + " seconds"};
}

Result<std::string> CurlTransfer::notSent() const { return Error{"The request cannot be sent"}; }

DataTaskCompletion CurlTransfer::releaseCompletion() {
    handle_.reset();
    request_ = {};
    return std::move(completion_);
}

} // namespace tallyfoot
