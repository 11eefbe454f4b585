#include "service/redfish/transfers.h"

#include <algorithm>
#include <new>
#include <utility>

#include "common/text.h"
#include "service/redfish/curl.h"

namespace zymdb::service::redfish {
namespace {

constexpr const char* kSchemes[] = {"http://", "https://"};

struct FreeUrl {
  void operator()(CURLU* url) const { curl().url_cleanup(url); }
};
using UrlPtr = std::unique_ptr<CURLU, FreeUrl>;

struct FreeEasy {
  void operator()(CURL* easy) const { curl().easy_cleanup(easy); }
};
struct FreeList {
  void operator()(curl_slist* list) const { curl().slist_free_all(list); }
};
using ListPtr = std::unique_ptr<curl_slist, FreeList>;

bool has_part(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  const bool is_there = curl().url_get(url, part, &text, 0) == CURLUE_OK && text != nullptr;
  curl().free(text);
  return is_there;
}

void append(ListPtr& list, const std::string& line) {
  curl_slist* const longer = curl().slist_append(list.get(), line.c_str());
  if (longer == nullptr) throw std::bad_alloc();
  std::ignore = list.release();
  list.reset(longer);
}

// Nobody wants to know what the answer says.
size_t drop(char*, size_t size, size_t count, void*) {
  return size * count;
}

}  // namespace

bool is_destination(const std::string& url) {
  const auto is_printable = [](char c) { return c > ' ' && c < '\x7f'; };
  if (!std::ranges::all_of(url, is_printable)) return false;
  // Libcurl would put up with one slash, or three.
  const auto has_scheme = [&](std::string_view scheme) {
    return url.size() > scheme.size() && begins_alike(url, scheme) && url[scheme.size()] != '/';
  };
  if (!std::ranges::any_of(kSchemes, has_scheme)) return false;
  const UrlPtr parsed(curl().url());
  if (parsed == nullptr) throw std::bad_alloc();
  return curl().url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) == CURLUE_OK &&
         has_part(parsed.get(), CURLUPART_HOST) && !has_part(parsed.get(), CURLUPART_USER) &&
         !has_part(parsed.get(), CURLUPART_PASSWORD);
}

struct Transfers::Multi {
  Multi() : handle(curl().multi_init()) {
    if (handle == nullptr) throw std::bad_alloc();
  }
  ~Multi() { curl().multi_cleanup(handle); }
  Multi(const Multi&) = delete;
  Multi& operator=(const Multi&) = delete;

  CURLM* const handle;
};

class Transfers::Transfer {
 public:
  Transfer(CURLM* multi, Post post, const DeliveryTimes& times)
      : multi_(multi), post_(std::move(post)), easy_(curl().easy_init()) {
    if (easy_ == nullptr) throw std::bad_alloc();
    add_headers();
    set(CURLOPT_URL, post_.url.c_str());
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(post_.body.size()));
    set(CURLOPT_POSTFIELDS, post_.body.data());
    set(CURLOPT_HTTPHEADER, headers_.get());
    set(CURLOPT_USERAGENT, "zymdb/" ZYMDB_VERSION);
    set(CURLOPT_WRITEFUNCTION, drop);
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(times.connect.count()));
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(times.whole.count()));
    keep_to_destination();
    if (curl().multi_add_handle(multi_, easy_.get()) != CURLM_OK) throw std::bad_alloc();
  }
  ~Transfer() { curl().multi_remove_handle(multi_, easy_.get()); }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  const std::string& id() const { return post_.id; }
  const CURL* easy() const { return easy_.get(); }

  bool is_accepted() const {
    long status = 0;
    curl().easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status >= 200 && status < 300;
  }

 private:
  template <class Value>
  void set(CURLoption option, Value value) {
    if (curl().easy_setopt(easy_.get(), option, value) != CURLE_OK) throw std::bad_alloc();
  }

  void add_headers() {
    // No receiver has to be asked whether it wants so little.
    for (const char* const line : {"Content-Type: application/json", "OData-Version: 4.0", "Expect:"})
      append(headers_, line);
    // What has no value would be left out but for the semicolon.
    for (const auto& [name, value] : post_.headers)
      append(headers_, value.empty() ? name + ";" : name + ": " + value);
  }

  // What is posted goes where somebody wanted it, and nowhere else.
  void keep_to_destination() {
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_PROXY, "");
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    // A name server that does not answer holds up nobody: who asks it is left to itself.
    set(CURLOPT_QUICK_EXIT, 1L);
  }

  CURLM* const multi_;
  const Post post_;
  ListPtr headers_;
  const std::unique_ptr<CURL, FreeEasy> easy_;
};

Transfers::Transfers(const DeliveryTimes& times) : times_(times), multi_(std::make_unique<Multi>()) {}

Transfers::~Transfers() = default;

void Transfers::start(Post post) {
  transfers_.push_back(std::make_unique<Transfer>(multi_->handle, std::move(post), times_));
}

bool Transfers::has(const std::string& id) const {
  return std::ranges::any_of(transfers_, [&](const auto& each) { return each->id() == id; });
}

void Transfers::give_up(const std::string& id) {
  std::erase_if(transfers_, [&](const auto& each) { return each->id() == id; });
}

std::vector<Outcome> Transfers::go_on() {
  int running = 0, left = 0;
  curl().multi_perform(multi_->handle, &running);
  std::vector<Outcome> outcomes;
  while (const CURLMsg* const message = curl().multi_info_read(multi_->handle, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    const CURL* const easy = message->easy_handle;
    const bool is_done = message->data.result == CURLE_OK;
    const auto ended =
        std::ranges::find_if(transfers_, [&](const auto& each) { return each->easy() == easy; });
    if (ended == transfers_.end()) continue;
    outcomes.push_back({(*ended)->id(), is_done && (*ended)->is_accepted()});
    transfers_.erase(ended);
  }
  return outcomes;
}

void Transfers::wait(std::chrono::milliseconds longest) {
  curl().multi_poll(multi_->handle, nullptr, 0, static_cast<int>(longest.count()), nullptr);
}

void Transfers::wake() {
  curl().multi_wakeup(multi_->handle);
}

}  // namespace zymdb::service::redfish
