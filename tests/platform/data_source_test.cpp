#include "client/engine/data_source.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>

#include "client/engine/engines.h"

namespace zymdb::client {
namespace {

std::string inventory_path(const char* variable) {
  if (variable != nullptr) {
    setenv("ZYMDB_INVENTORY", variable, 1);
  } else {
    unsetenv("ZYMDB_INVENTORY");
  }
  DataSource source;
  std::string error;
  if (!locate_inventory(source, error)) return "refused: " + error;
  EXPECT_EQ(source.schema, &kInventorySchema);
  return source.address;
}

TEST(DataSourceTest, TheInventoryIsWhereTheVariableSays) {
  EXPECT_EQ(inventory_path(nullptr), "/var/lib/zymdb/inventory.db");
  EXPECT_EQ(inventory_path(""), "/var/lib/zymdb/inventory.db");
  EXPECT_EQ(inventory_path("/a/b.db"), "/a/b.db");
  EXPECT_EQ(inventory_path("sqlite:/a/b.db"), "/a/b.db");
  EXPECT_EQ(inventory_path("sqlite:///a/b.db"), "/a/b.db");
  EXPECT_EQ(inventory_path("/a/odd:name.db"), "/a/odd:name.db");
  EXPECT_EQ(inventory_path("b.db"), std::filesystem::current_path() / "b.db");
}

TEST(DataSourceTest, WhatNoEngineOpensIsRefused) {
  for (const char* variable : {"other://host/db", "file:/a/b.db", ":memory:", "sqlite:", "sqlite:///a/"}) {
    EXPECT_EQ(inventory_path(variable).substr(0, 8), "refused:") << variable;
  }
  EXPECT_EQ(inventory_path("other://host/db"),
            "refused: ZYMDB_INVENTORY names a database that no engine opens: other://host/db");
  EXPECT_EQ(inventory_path("sqlite:"), "refused: ZYMDB_INVENTORY names no file: sqlite:");
}

// What the address says of the inventory holds for its properties.
std::string flushing_of(const char* variable) {
  setenv("ZYMDB_INVENTORY", variable, 1);
  DataSource source;
  DataSource properties;
  std::string error;
  if (!locate_inventory(source, error)) return error;
  EXPECT_TRUE(locate_database("propertiesdb", properties, error)) << error;
  EXPECT_EQ(properties.flushes_commits, source.flushes_commits);
  return source.address + (source.flushes_commits ? " at each commit" : " later");
}

TEST(DataSourceTest, AnAddressSaysWhenCommitsAreFlushed) {
  EXPECT_EQ(flushing_of(""), "/var/lib/zymdb/inventory.db at each commit");
  EXPECT_EQ(flushing_of("/a/b.db"), "/a/b.db at each commit");
  EXPECT_EQ(flushing_of("sqlite:/a/b.db"), "/a/b.db at each commit");
  EXPECT_EQ(flushing_of("sqlite:/a/b.db?"), "/a/b.db at each commit");
  EXPECT_EQ(flushing_of("sqlite:/a/b.db?synchronous=full"), "/a/b.db at each commit");
  EXPECT_EQ(flushing_of("sqlite:/a/b.db?synchronous=normal"), "/a/b.db later");
  EXPECT_EQ(flushing_of("sqlite:///a/b.db?synchronous=full&synchronous=normal"), "/a/b.db later");
}

TEST(DataSourceTest, APathWithoutASchemeMayHoldAQuestionMark) {
  EXPECT_EQ(flushing_of("/a/b.db?synchronous=normal"), "/a/b.db?synchronous=normal at each commit");
}

TEST(DataSourceTest, AWrongChoiceIsRefused) {
  for (const char* choice :
       {"synchronous=off", "synchronous=NORMAL", "synchronous=", "synchronous", "flush=5s",
        "synchronous=normal&x", "&synchronous=normal", "synchronous=normal?"}) {
    EXPECT_EQ(inventory_path((std::string("sqlite:/a/b.db?") + choice).c_str()).substr(0, 8), "refused:")
        << choice;
  }
  EXPECT_EQ(flushing_of("sqlite:/a/b.db?synchronous=off"),
            "ZYMDB_INVENTORY says synchronous=off, and may say synchronous=full or synchronous=normal: "
            "sqlite:/a/b.db?synchronous=off");
  EXPECT_EQ(flushing_of("sqlite:?synchronous=normal"),
            "ZYMDB_INVENTORY names no file: sqlite:?synchronous=normal");
}

TEST(DataSourceTest, EachEngineIsChosenByTheSchemeOfAnAddress) {
  std::set<std::string_view> schemes;
  for (const Engine* engine : engines()) {
    EXPECT_TRUE(schemes.insert(engine->scheme).second) << engine->scheme;
    setenv("ZYMDB_INVENTORY", (std::string(engine->scheme) + ":/a/b").c_str(), 1);
    DataSource source;
    std::string error;
    ASSERT_TRUE(locate_inventory(source, error)) << error;
    EXPECT_EQ(source.engine, engine);
  }
}

std::string properties_path(const char* inventory) {
  setenv("ZYMDB_INVENTORY", inventory, 1);
  DataSource source;
  std::string error;
  EXPECT_TRUE(locate_database("propertiesdb", source, error)) << error;
  EXPECT_EQ(source.schema, &kPropertiesSchema);
  return source.address + (source.predecessor.empty() ? "" : " once " + source.predecessor);
}

TEST(DataSourceTest, EachInventoryHasPropertiesOfItsOwn) {
  EXPECT_EQ(properties_path("/a/b.db"), "/a/b-properties.db");
  EXPECT_EQ(properties_path("sqlite:/a/c.db"), "/a/c-properties.db");
  EXPECT_EQ(properties_path("/a/inventory"), "/a/inventory-properties.db");
  EXPECT_EQ(properties_path("/a.db/x.dbx"), "/a.db/x.dbx-properties.db");
  EXPECT_EQ(properties_path("/a/inventory.db"), "/a/inventory-properties.db");
}

TEST(DataSourceTest, WhatAllInventoriesSharedIsTheDefaultOnes) {
  const std::string expected = "/var/lib/zymdb/inventory-properties.db once /var/lib/zymdb/propertiesdb.db";
  EXPECT_EQ(properties_path(""), expected);
  EXPECT_EQ(properties_path(kDefaultInventory), expected);
  EXPECT_EQ(properties_path("/var/lib/zymdb/second.db"), "/var/lib/zymdb/second-properties.db");
}

TEST(DataSourceTest, TheInventoryItselfHasNoPredecessor) {
  setenv("ZYMDB_INVENTORY", "", 1);
  DataSource source;
  std::string error;
  ASSERT_TRUE(locate_database("propertiesdb", source, error));
  ASSERT_TRUE(locate_inventory(source, error));
  EXPECT_EQ(source.predecessor, "");
}

TEST(DataSourceTest, OnlyKnownDatabasesAreFound) {
  setenv("ZYMDB_INVENTORY", "/a/b.db", 1);
  DataSource source;
  std::string error;
  for (const char* name : {"", "other", "../propertiesdb", "propertiesdb/../x", "PropertiesDB"}) {
    EXPECT_FALSE(locate_database(name, source, error)) << name;
    EXPECT_FALSE(error.empty());
  }
}

}  // namespace
}  // namespace zymdb::client
