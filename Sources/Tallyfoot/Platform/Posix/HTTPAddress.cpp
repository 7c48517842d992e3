#include "Tallyfoot/Platform/Posix/HTTPAddress.h"

#include "Tallyfoot/Platform/URLSession.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netinet/in.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace tallyfoot {

namespace {

struct PartsDeleter {
    void operator()(CURLU* parts) const noexcept { curl_url_cleanup(parts); }
};

using Parts = std::unique_ptr<CURLU, PartsDeleter>;

char lowerCase(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) { return lowerCase(letter); });
    return text;
}

bool holdsSpace(std::string_view url) {
    return std::any_of(url.begin(), url.end(),
                       [](char letter) { return (letter >= 0 && letter <= ' ') || letter == 0x7F; });
}

// libcurl takes "http:/host" and "http:///host" for addresses too.
bool beginsLikeAnAddress(const std::string& url) {
    const auto head = lowerCase(url.substr(0, 8));
    const std::size_t hostAt = head == "https://" ? 8 : head.starts_with("http://") ? 7 : url.size();
    return hostAt < url.size() && std::string_view("/?#").find(url[hostAt]) == std::string_view::npos;
}

std::string part(const Parts& parts, CURLUPart which, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(parts.get(), which, &text, flags) != CURLUE_OK) return {};
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return text;
}

} // namespace

std::optional<HTTPAddress> httpAddress(const std::string& url) {
    if (holdsSpace(url) || !beginsLikeAnAddress(url)) return std::nullopt;
    const Parts parts(curl_url());
    if (!parts || curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), CURLU_URLENCODE) != CURLUE_OK)
        return std::nullopt;
    HTTPAddress address;
    const auto host = lowerCase(part(parts, CURLUPART_HOST));
    address.origin =
        lowerCase(part(parts, CURLUPART_SCHEME)) + "://" + host + ":" + part(parts, CURLUPART_PORT, CURLU_DEFAULT_PORT);
    address.host = host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
    address.url = part(parts, CURLUPART_URL);
    address.user = part(parts, CURLUPART_USER);
    if (const auto password = part(parts, CURLUPART_PASSWORD); !password.empty()) address.user += ':' + password;
    if (address.host.empty()) return std::nullopt;
    return address;
}

bool HTTPAddress::isLoopback() const {
    if (host == "localhost" || host.ends_with(".localhost") || host == "::1") return true;
    in_addr number{};
    return ::inet_pton(AF_INET, host.c_str(), &number) == 1 && ntohl(number.s_addr) >> 24U == 127;
}

bool isUploadURL(const std::string& url) { return httpAddress(url).has_value(); }

} // namespace tallyfoot
