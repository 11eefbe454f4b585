#include "client/engine/data_source.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

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
  return source.path;
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
}

TEST(DataSourceTest, OtherDatabasesLieBesideTheInventory) {
  setenv("ZYMDB_INVENTORY", "/a/b.db", 1);
  DataSource source;
  std::string error;
  ASSERT_TRUE(locate_database("propertiesdb", source, error));
  EXPECT_EQ(source.path, "/a/propertiesdb.db");
  EXPECT_EQ(source.schema, &kPropertiesSchema);
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
