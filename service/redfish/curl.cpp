#include "service/redfish/curl.h"

#include <dlfcn.h>

namespace zymdb::service::redfish {
namespace {

void* open(const char* library) {
  void* const opened = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  if (opened == nullptr) throw NoCurl(dlerror());
  return opened;
}

// A function of whatever type it is assigned to.
struct Found {
  void* address;

  template <class Function>
  operator Function*() const {
    return reinterpret_cast<Function*>(address);
  }
};

Found find(void* library, const char* name) {
  void* const address = dlsym(library, name);
  if (address == nullptr) throw NoCurl(dlerror());
  return {address};
}

}  // namespace

void Curl::Close::operator()(void* opened) const {
  dlclose(opened);
}

Curl::Curl(const char* name)
    : library(open(name)),
      global_init(find(library.get(), "curl_global_init")),
      free(find(library.get(), "curl_free")),
      slist_append(find(library.get(), "curl_slist_append")),
      slist_free_all(find(library.get(), "curl_slist_free_all")),
      url(find(library.get(), "curl_url")),
      url_cleanup(find(library.get(), "curl_url_cleanup")),
      url_get(find(library.get(), "curl_url_get")),
      url_set(find(library.get(), "curl_url_set")),
      easy_init(find(library.get(), "curl_easy_init")),
      easy_cleanup(find(library.get(), "curl_easy_cleanup")),
      easy_getinfo(find(library.get(), "curl_easy_getinfo")),
      easy_setopt(find(library.get(), "curl_easy_setopt")),
      multi_init(find(library.get(), "curl_multi_init")),
      multi_cleanup(find(library.get(), "curl_multi_cleanup")),
      multi_add_handle(find(library.get(), "curl_multi_add_handle")),
      multi_remove_handle(find(library.get(), "curl_multi_remove_handle")),
      multi_info_read(find(library.get(), "curl_multi_info_read")),
      multi_perform(find(library.get(), "curl_multi_perform")),
      multi_poll(find(library.get(), "curl_multi_poll")),
      multi_wakeup(find(library.get(), "curl_multi_wakeup")) {
  if (global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) throw NoCurl("libcurl cannot be used");
}

const Curl& curl() {
  static const Curl* const opened = new Curl(ZYMDB_CURL_LIBRARY);
  return *opened;
}

}  // namespace zymdb::service::redfish
