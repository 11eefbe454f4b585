// What holds for every record type: names that lead to one field each, and lists that are whole or fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <strings.h>

#include <set>

#include "records/cpu_mem.h"
#include "records/firmware.h"
#include "records/network.h"
#include "records/pci.h"
#include "records/pci_settings.h"
#include "records/storage.h"
#include "records/system.h"
#include "support/inventory.h"
#include "support/parsing_marker.h"

namespace zymdb::records {
namespace {

using testing::HasSubstr;

constexpr int kCannotBeOpened = 44;

std::vector<RecordType> stored_types() {
  return {system(),
          processors(),
          memory_modules(),
          adapters(),
          functions(std::make_shared<std::string>(kPciIdsFile)),
          gpus(),
          physical_ports(),
          logical_ports(),
          firmware_components(),
          pldm_devices(),
          embedded_devices(),
          dpu_events([] { return 3; }),
          settings(),
          pending_settings(),
          drives(),
          backplanes()};
}

std::vector<RecordType> all_types() {
  auto types = stored_types();
  types.push_back(cards());
  types.push_back(link_states([] { return std::vector<_ZYMDB_PCI_PortLinkState>(); }));
  types.push_back(drive_identity([] { return std::vector<_ZYMDB_AimDisk>(); }));
  return types;
}

TEST(RecordTypes, HaveFieldsOfOneNameEach) {
  for (const auto& type : all_types()) {
    std::set<std::string> headings, keys;
    for (const auto& field : type.fields) {
      EXPECT_TRUE(headings.insert(field.heading).second) << type.name << " " << field.heading;
      EXPECT_TRUE(keys.insert(field.key).second) << type.name << " " << field.key;
    }
  }
}

TEST(RecordTypes, HaveEveryColumnUnderItsHeading) {
  for (const auto& type : all_types()) {
    for (size_t i = 0; i < type.fields.size(); ++i)
      EXPECT_EQ(find_field(type, type.fields[i].heading), i) << type.name << " " << type.fields[i].heading;
  }
}

TEST(RecordTypes, HaveEveryFieldUnderItsKey) {
  for (const auto& type : all_types()) {
    for (size_t i = 0; i < type.fields.size(); ++i)
      EXPECT_EQ(find_field(type, type.fields[i].key), i) << type.name << " " << type.fields[i].key;
  }
}

// Keys are names of variables for shells and columns for whatever else reads them.
TEST(RecordTypes, HaveKeysThatAreIdentifiers) {
  for (const auto& type : all_types()) {
    for (const auto& field : type.fields)
      EXPECT_THAT(field.key, testing::MatchesRegex("[A-Za-z_][A-Za-z0-9_]*")) << type.name;
  }
}

TEST(RecordTypes, SayWhatTheirFieldsMeanAndShowSome) {
  for (const auto& type : all_types()) {
    EXPECT_FALSE(type.description.empty()) << type.name;
    EXPECT_FALSE(default_fields(type).empty()) << type.name;
    for (const auto& field : type.fields) EXPECT_STRNE(field.meaning, "") << type.name << " " << field.key;
  }
}

class StoredTypes : public InventoryTest {
 private:
  ParsingMarker marker_;  // nobody stores settings meanwhile
};

TEST_F(StoredTypes, OfAnEmptyInventoryAreEmptyLists) {
  for (const auto& type : stored_types()) {
    if (type.name == "backplanes") continue;  // all of them together are one record
    EXPECT_TRUE(type.list(all_fields(type)).rows.empty()) << type.name;
  }
}

TEST_F(StoredTypes, WithoutADatabaseAreFailuresThatNameTheRecords) {
  lose_database();
  for (const auto& type : stored_types()) {
    try {
      type.list(all_fields(type));
      ADD_FAILURE() << type.name;
    } catch (const DatabaseError& error) {
      EXPECT_THAT(error.what(), HasSubstr("cannot read the ")) << type.name;
      EXPECT_EQ(error.status(), kCannotBeOpened) << type.name;
    }
  }
}

}  // namespace
}  // namespace zymdb::records
