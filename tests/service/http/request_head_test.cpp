// Heads of requests that are refused, each with the status that says why.
#include "service/http/request_head.h"

#include <gtest/gtest.h>

namespace zymdb::service {
namespace {

RequestHead good_head() {
  return {"GET", "HTTP/1.1", "/metrics?a=b", {{"Host", "server:8000"}, {"Accept", "*/*"}}};
}

struct Refused {
  const char* what;
  int status;
  void (*change)(RequestHead& head);
};

std::string& long_text() {
  static std::string text(20000, 'a');
  return text;
}

std::string& long_target() {
  static std::string target = "/" + std::string(5000, 'a');
  return target;
}

const Refused kRefused[] = {
    {"a method that nobody knows", 501, [](RequestHead& head) { head.method = "BREW"; }},
    {"a method in small letters", 501, [](RequestHead& head) { head.method = "get"; }},
    {"no host", 400, [](RequestHead& head) { head.headers.erase(head.headers.begin()); }},
    {"two hosts", 400, [](RequestHead& head) { head.headers.emplace_back("host", "other"); }},
    {"a host that is none", 400, [](RequestHead& head) { head.headers[0].second = "a b"; }},
    {"a path that leaves its root", 400, [](RequestHead& head) { head.target = "/../x"; }},
    {"a long target", 414, [](RequestHead& head) { head.target = long_target(); }},
    {"a long header", 431, [](RequestHead& head) { head.headers.emplace_back("X", long_text()); }},
    {"many headers", 431,
     [](RequestHead& head) {
       head.headers.resize(4000, {"X", "y"});
     }},
    {"a length that is no number", 400,
     [](RequestHead& head) { head.headers.emplace_back("Content-Length", "5x"); }},
    {"an empty length", 400, [](RequestHead& head) { head.headers.emplace_back("Content-Length", ""); }},
    {"a negative length", 400, [](RequestHead& head) { head.headers.emplace_back("Content-Length", "-1"); }},
    {"a length with a plus", 400,
     [](RequestHead& head) { head.headers.emplace_back("Content-Length", "+1"); }},
    {"two lengths", 400,
     [](RequestHead& head) {
       head.headers.insert(head.headers.end(), 2, {"Content-Length", "5"});
     }},
    {"a body beyond the bound", 413,
     [](RequestHead& head) { head.headers.emplace_back("Content-Length", "65537"); }},
    {"a body beyond any number", 413,
     [](RequestHead& head) { head.headers.emplace_back("Content-Length", "99999999999999999999999"); }},
    {"a body of unknown length", 411,
     [](RequestHead& head) { head.headers.emplace_back("Transfer-Encoding", "chunked"); }},
    {"a body of two lengths", 400,
     [](RequestHead& head) {
       head.headers.emplace_back("Transfer-Encoding", "chunked");
       head.headers.emplace_back("Content-Length", "5");
     }},
};

TEST(RequestHead, IsRefusedForWhatIsWrongWithIt) {
  for (const Refused& each : kRefused) {
    RequestHead head = good_head();
    each.change(head);
    EXPECT_EQ(check_head(head, {}).status, each.status) << each.what;
  }
}

TEST(RequestHead, IsTakenApart) {
  RequestHead head = good_head();
  head.method = "PATCH";
  head.headers.emplace_back("content-length", "65536");
  const CheckedHead checked = check_head(head, {});
  EXPECT_EQ(checked.status, 0);
  EXPECT_EQ(checked.request.method, Method::kPatch);
  EXPECT_EQ(checked.request.path, "/metrics");
  EXPECT_EQ(checked.request.query.front().second, "b");
  EXPECT_EQ(checked.request.header("HOST"), "server:8000");
}

TEST(RequestHead, OfHttp10NeedsNoHost) {
  RequestHead head = good_head();
  head.version = "HTTP/1.0";
  head.headers.clear();
  EXPECT_EQ(check_head(head, {}).status, 0);
}

TEST(RequestHead, ThatIsRefusedStillSaysForWhatItWas) {
  RequestHead head = good_head();
  head.headers.emplace_back("Content-Length", "1000000000");
  const CheckedHead checked = check_head(head, {});
  EXPECT_EQ(checked.status, 413);
  EXPECT_EQ(checked.request.path, "/metrics");
}

}  // namespace
}  // namespace zymdb::service
