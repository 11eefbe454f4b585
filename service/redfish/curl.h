// libcurl, opened with the first subscription: it brings two dozen libraries along, which nothing else here
// needs.
#ifndef ZYMDB_SERVICE_REDFISH_CURL_H
#define ZYMDB_SERVICE_REDFISH_CURL_H

#include <curl/curl.h>

#include <memory>
#include <stdexcept>

namespace zymdb::service::redfish {

class NoCurl : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Its functions, by their names without "curl_".
struct Curl {
  // Of the library with that name. Throws NoCurl when it is not there, or not what it should be.
  explicit Curl(const char* library);

  struct Close {
    void operator()(void* library) const;
  };
  // Comes first: the functions are found in it.
  const std::unique_ptr<void, Close> library;

  decltype(&curl_global_init) global_init;
  decltype(&curl_free) free;
  decltype(&curl_slist_append) slist_append;
  decltype(&curl_slist_free_all) slist_free_all;
  decltype(&curl_url) url;
  decltype(&curl_url_cleanup) url_cleanup;
  decltype(&curl_url_get) url_get;
  decltype(&curl_url_set) url_set;
  decltype(&curl_easy_init) easy_init;
  decltype(&curl_easy_cleanup) easy_cleanup;
  decltype(&curl_easy_getinfo) easy_getinfo;
  decltype(&curl_easy_setopt) easy_setopt;
  decltype(&curl_multi_init) multi_init;
  decltype(&curl_multi_cleanup) multi_cleanup;
  decltype(&curl_multi_add_handle) multi_add_handle;
  decltype(&curl_multi_remove_handle) multi_remove_handle;
  decltype(&curl_multi_info_read) multi_info_read;
  decltype(&curl_multi_perform) multi_perform;
  decltype(&curl_multi_poll) multi_poll;
  decltype(&curl_multi_wakeup) multi_wakeup;
};

// The one that the service was built with, once for the process, which keeps it. Throws NoCurl.
const Curl& curl();

}  // namespace zymdb::service::redfish

#endif
