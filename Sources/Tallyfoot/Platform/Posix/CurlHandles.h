#pragma once

#include <curl/curl.h>

#include <memory>

namespace tallyfoot {

struct CurlDeleter {
    void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
    void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};

struct CurlMultiDeleter { // of its own: libcurl's handles are all `void`
    void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
};

using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;
using CurlMulti = std::unique_ptr<CURLM, CurlMultiDeleter>;
using CurlList = std::unique_ptr<curl_slist, CurlDeleter>;

} // namespace tallyfoot
