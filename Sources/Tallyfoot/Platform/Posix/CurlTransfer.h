#pragma once

#include "Tallyfoot/Platform/Posix/CurlHandles.h"
#include "Tallyfoot/Platform/URLSession.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <string>

namespace tallyfoot {

// One request, from its options to its answer. Belongs to the session's thread. Each sending has a
// libcurl handle of its own: with one that is used anew, libcurl 7.88 takes an answer that begins with a
// folded header line for more of a header that it has freed. Connections are the session's, and kept.
//
// Where it goes: to the request's own scheme, host and port, and nowhere else. 307 and 308 are
// followed there, body and headers included, five times at the most; any other redirect is the
// answer itself. $http_proxy, $https_proxy, $all_proxy and $no_proxy are respected, but a loopback
// address is never handed to a proxy. $SSL_CERT_FILE and $SSL_CERT_DIR name the trusted certificates
// where the system's own are not meant.
class CurlTransfer {
public:
    static constexpr std::size_t maximumAnswer = 1u << 20; // bytes of body; a longer answer is an error
    static constexpr std::size_t maximumHeaders = 1u << 18;

    using TimePoint = std::chrono::steady_clock::time_point;

    CurlTransfer(URLRequest request, DataTaskCompletion completion);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    CURL* handle() const noexcept { return handle_.get(); }

    // Makes the handle, another one after a redirect. False for a request that cannot be sent.
    bool prepare(TimePoint now);

    // The time at which the peer's silence has lasted too long, as of what was sent and received by now.
    // A header line counts once it is whole.
    TimePoint deadline(TimePoint now);

    // Whether the answer is a redirect to follow; the transfer is then ready to be prepared again.
    bool followsRedirect(CURLcode code);

    Result<std::string> outcome(CURLcode code);
    Result<std::string> timedOut() const;
    Result<std::string> notSent() const;

    // The handle and the request's body are gone afterwards.
    DataTaskCompletion releaseCompletion();

private:
    static std::size_t sendBody(char* into, std::size_t size, std::size_t count, void* transfer) noexcept;
    static int seekBody(void* transfer, curl_off_t offset, int origin) noexcept;
    static std::size_t receiveBody(char* bytes, std::size_t size, std::size_t count, void* transfer) noexcept;
    static std::size_t receiveHeader(char* bytes, std::size_t size, std::size_t count, void* transfer) noexcept;
    void setOptions();
    bool setHeaders();

    URLRequest request_;
    DataTaskCompletion completion_;
    CurlList headers_;
    std::array<char, CURL_ERROR_SIZE> error_{};
    std::size_t bodyOffset_ = 0; // up to here it was handed to libcurl
    std::string answer_;
    std::size_t headerBytes_ = 0;
    bool isTooLong_ = false;
    int redirects_ = 0;
    curl_off_t transferred_ = 0;
    TimePoint lastActivity_;
    CurlHandle handle_; // the last one: it goes before what its options point to
};

} // namespace tallyfoot
