// What becomes of a question that a handler cannot answer.
#include <gmock/gmock.h>

#include <functional>
#include <new>
#include <stdexcept>

#include "common/client_objects.h"
#include "service/http/kept_log.h"
#include "service/http/message.h"

namespace zymdb::service {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Not;
using testing::Pair;

class Failing : public Handler {
 public:
  explicit Failing(std::function<void()> failure) : failure_(std::move(failure)) {}
  Response answer(const Request&) override {
    failure_();
    return Response::of(200, "text/plain", "here");
  }

 private:
  const std::function<void()> failure_;
};

TEST(AFailedAnswer, IsToBeAskedForAgainWhereTheInventoryCannotBeRead) {
  KeptLog log;
  const Response response =
      Failing([] { throw DatabaseError("no such disk"); }).answer_or_refuse({}, log.log());
  EXPECT_EQ(response.status, 503);
  EXPECT_THAT(response.headers, Contains(Pair("Retry-After", "5")));
  EXPECT_THAT(log.lines(), ElementsAre("cannot read the inventory: no such disk"));
}

TEST(AFailedAnswer, IsToBeAskedForAgainWithoutMemory) {
  KeptLog log;
  const Response response = Failing([] { throw std::bad_alloc(); }).answer_or_refuse({}, log.log());
  EXPECT_EQ(response.status, 503);
  EXPECT_THAT(response.headers, Contains(Pair("Retry-After", "5")));
  EXPECT_THAT(log.lines(), ElementsAre("out of memory"));
}

TEST(AFailedAnswer, IsTheServicesFaultOtherwise) {
  KeptLog log;
  const Response response =
      Failing([] { throw std::runtime_error("nobody knows"); }).answer_or_refuse({}, log.log());
  EXPECT_EQ(response.status, 500);
  EXPECT_THAT(response.headers, Not(Contains(Key("Retry-After"))));
  EXPECT_THAT(log.lines(), ElementsAre("cannot answer: nobody knows"));
}

TEST(AnAnswer, LeavesNothingInTheLog) {
  KeptLog log;
  EXPECT_EQ(Failing([] {}).answer_or_refuse({}, log.log()).status, 200);
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
}  // namespace zymdb::service
