// Whether a client has an answer already.
#include "service/http/entity_tag.h"

#include <gtest/gtest.h>

namespace zymdb::service {
namespace {

TEST(EntityTag, IsNamedByItselfWhateverItsStrength) {
  for (const char* header :
       {"\"a\"", "W/\"a\"", "\"b\", \"a\"", "\"b\",W/\"a\" , \"c\"", "*", " * ", "\"a,b\", \"a\""}) {
    EXPECT_TRUE(names_tag(header, "\"a\"")) << header;
    EXPECT_TRUE(names_tag(header, "W/\"a\"")) << header;
  }
}

TEST(EntityTag, IsNotNamedByAnother) {
  for (const char* header : {"", "\"b\"", "a", "\"aa\"", "\"a", "W/", "\"b, a\"", "\"x\"a\"", ","})
    EXPECT_FALSE(names_tag(header, "\"a\"")) << header;
}

}  // namespace
}  // namespace zymdb::service
