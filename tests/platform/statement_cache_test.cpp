#include "client/engine/sqlite/statement_cache.h"

#include <gtest/gtest.h>

namespace zymdb::client::sqlite {
namespace {

Prepared named(const char* name) {
  Prepared prepared;
  prepared.names = std::make_shared<const NamedColumns>(std::vector<std::string>(1, name));
  return prepared;
}

TEST(StatementCacheTest, AStatementIsFoundByItsKey) {
  StatementCache cache(2);
  EXPECT_EQ(cache.find("a"), nullptr);
  cache.add("a", named("a"));
  ASSERT_NE(cache.find("a"), nullptr);
  EXPECT_EQ((*cache.find("a")->names)[0], "a");
}

TEST(StatementCacheTest, TheLeastRecentlyUsedGivesWay) {
  StatementCache cache(2);
  cache.add("a", named("a"));
  cache.add("b", named("b"));
  cache.find("a");
  cache.add("c", named("c"));
  EXPECT_EQ(cache.size(), 2U);
  EXPECT_NE(cache.find("a"), nullptr);
  EXPECT_EQ(cache.find("b"), nullptr);
  EXPECT_NE(cache.find("c"), nullptr);
}

TEST(StatementCacheTest, AClearedCacheIsEmpty) {
  StatementCache cache(2);
  cache.add("a", named("a"));
  cache.clear();
  EXPECT_EQ(cache.find("a"), nullptr);
  EXPECT_EQ(cache.size(), 0U);
}

}  // namespace
}  // namespace zymdb::client::sqlite
