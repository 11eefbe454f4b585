#include "controller/bios_configuration.h"

#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "platform/child_process.h"
#include "platform/client_fixture.h"
#include "support/sql.h"

namespace {

namespace fs = std::filesystem;

class BiosConfigurationTest : public ClientTest {
 protected:
  ~BiosConfigurationTest() override {
    while (cmr_api_uninitialize() == 0) {
    }
  }

  static cmr_attribute_request_t request(const char* name, const char* value) {
    cmr_attribute_request_t each{};
    each.kind = 2;
    each.name = name;
    each.value = value;
    return each;
  }

  void known_attribute(const char* name) {
    _zym_db_handle_t* const properties = zym_db_open("localhost", "root", "", "propertiesdb", 0);
    const Set values(zym_db_get_content_values(properties));
    zym_db_content_put_text(values.get(), "name", name);
    EXPECT_EQ(zym_db_insert(properties, "biosAttribute", values.get(), 0, nullptr), 0);
    zym_db_close(properties);
  }

  // "name=value kind" of each kept value.
  std::string pending() {
    _zym_db_handle_t* const properties = zym_db_open("localhost", "root", "", "propertiesdb", 0);
    zym_db_result_t* rows = nullptr;
    EXPECT_EQ(
        zym_db_query(properties, "biosPendingValue", nullptr, 0, "1 ORDER BY name", nullptr, 0, 0, &rows), 0);
    std::string text;
    while (zym_db_result_step(rows) == ZYM_DB_STATUS_ROW) {
      char name[32] = "";
      char value[32] = "";
      unsigned int kind = 0;
      extract_str_column_from_result(rows, "name", name, sizeof name);
      extract_str_column_from_result(rows, "value", value, sizeof value);
      extract_uint_column_from_result(rows, "kind", &kind);
      text += std::string(name) + "=" + value + " " + std::to_string(kind) + "\n";
    }
    zym_db_free_result(rows);
    zym_db_close(properties);
    return text;
  }
};

// The manager keeps the database open, and nothing that belongs to others.
class KeptPropertiesTest : public BiosConfigurationTest {
 protected:
  KeptPropertiesTest() { cmr_api_initialize(); }

  static int save(const char* value) {
    cmr_attribute_request_t each = request("NIC.1", value);
    return cmr_set_bios_attribute_value(&each, 1);
  }
  std::string path(const char* name = "inventory-properties.db") const { return folder() / name; }
  static ino_t file(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
  }
};

TEST_F(KeptPropertiesTest, StayAsTheyAreBetweenSaves) {
  ASSERT_EQ(save("1"), 0);
  const ino_t log = file(path("inventory-properties.db-wal"));
  const auto written = fs::last_write_time(path());
  const auto listed = fs::last_write_time(folder());
  EXPECT_NE(log, 0U);
  for (const char* value : {"2", "3"}) {
    EXPECT_EQ(save(value), 0);
    EXPECT_EQ(file(path("inventory-properties.db-wal")), log);
  }
  EXPECT_EQ(fs::last_write_time(path()), written);
  EXPECT_EQ(fs::last_write_time(folder()), listed);
  EXPECT_EQ(pending(), "NIC.1=3 2\n");
}

TEST_F(KeptPropertiesTest, AreOneWholeFileOnceTheThreadEnds) {
  std::thread([] { EXPECT_EQ(save("1"), 0); }).join();
  EXPECT_EQ(file(path("inventory-properties.db-wal")), 0U);
  EXPECT_EQ(run_sql_on(path(), "SELECT value FROM biosPendingValue"), "1\n");
}

TEST_F(KeptPropertiesTest, AreThoseThatTakeTheirPlace) {
  ASSERT_EQ(save("1"), 0);
  run_sql_on(path(),
             "INSERT INTO biosAttribute (name) VALUES ('NIC.1'); VACUUM INTO '" + path("copy.db") + "'");
  fs::rename(path("copy.db"), path());
  EXPECT_EQ(save("2"), 0);
  EXPECT_EQ(pending(), "NIC.1=2 2\n");
  fs::remove(path());
  EXPECT_EQ(save("3"), 0);
  EXPECT_EQ(pending(), "NIC.1=3 2\n");
}

TEST_F(KeptPropertiesTest, AreThoseOfTheInventoryThatIsNamedNow) {
  ASSERT_EQ(save("1"), 0);
  const std::string other = folder() / "other.db";
  zym_db_close(handle());
  setenv("ZYMDB_INVENTORY", other.c_str(), 1);
  EXPECT_EQ(save("2"), 0);
  EXPECT_EQ(pending(), "NIC.1=2 2\n");
  zym_db_close(handle());
  setenv("ZYMDB_INVENTORY", path("inventory.db").c_str(), 1);
  EXPECT_EQ(pending(), "NIC.1=1 2\n");
}

TEST_F(KeptPropertiesTest, AreNotInherited) {
  ASSERT_EQ(save("1"), 0);
  EXPECT_EQ(ChildProcess([] { return save("2"); }).wait(), 0);
  EXPECT_EQ(pending(), "NIC.1=2 2\n");
  EXPECT_EQ(save("3"), 0);
  EXPECT_EQ(pending(), "NIC.1=3 2\n");
}

TEST_F(KeptPropertiesTest, AreOpenedLaterWhereTheyCouldNotBe) {
  lose_database();
  EXPECT_EQ(save("1"), ZYM_DB_STATUS_NO_DB);
  setenv("ZYMDB_INVENTORY", path("inventory.db").c_str(), 1);
  EXPECT_EQ(save("2"), 0);
  EXPECT_EQ(pending(), "NIC.1=2 2\n");
}

TEST_F(BiosConfigurationTest, AnEmptyAttributeListAcceptsEveryName) {
  cmr_attribute_request_t requests[] = {request("NIC.1", "Enabled"), request("NIC.2", "it's \"off\"")};
  ASSERT_EQ(cmr_api_initialize(), 0);
  EXPECT_EQ(cmr_set_bios_attribute_value(requests, 2), 0);
  EXPECT_EQ(requests[0].status, 0U);
  EXPECT_EQ(requests[1].status, 0U);
  EXPECT_EQ(pending(), "NIC.1=Enabled 2\nNIC.2=it's \"off\" 2\n");
}

TEST_F(BiosConfigurationTest, ANewValueReplacesTheOneThatWaits) {
  ASSERT_EQ(cmr_api_initialize(), 0);
  cmr_attribute_request_t first = request("NIC.1", "Enabled");
  cmr_attribute_request_t second = request("NIC.1", "Disabled");
  EXPECT_EQ(cmr_set_bios_attribute_value(&first, 1), 0);
  EXPECT_EQ(cmr_set_bios_attribute_value(&second, 1), 0);
  EXPECT_EQ(pending(), "NIC.1=Disabled 2\n");
}

TEST_F(BiosConfigurationTest, UnknownNamesAreRefusedOneByOne) {
  known_attribute("NIC.1");
  ASSERT_EQ(cmr_api_initialize(), 0);
  cmr_attribute_request_t requests[] = {request("NIC.9", "Enabled"), request("NIC.1", "Enabled")};
  EXPECT_EQ(cmr_set_bios_attribute_value(requests, 2), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(requests[0].status, static_cast<uint32_t>(ZYM_DB_STATUS_NOT_FOUND));
  EXPECT_EQ(requests[1].status, 0U);
  EXPECT_EQ(pending(), "NIC.1=Enabled 2\n");
}

TEST_F(BiosConfigurationTest, ARequestNeedsANameAndAValue) {
  ASSERT_EQ(cmr_api_initialize(), 0);
  cmr_attribute_request_t requests[] = {request(nullptr, "x"), request("", "x"), request("NIC.1", nullptr)};
  EXPECT_EQ(cmr_set_bios_attribute_value(requests, 3), ZYM_DB_STATUS_INVALID_PARAM);
  for (const auto& each : requests)
    EXPECT_EQ(each.status, static_cast<uint32_t>(ZYM_DB_STATUS_INVALID_PARAM));
  EXPECT_EQ(pending(), "");
}

TEST_F(BiosConfigurationTest, NothingIsSetWithoutASession) {
  cmr_attribute_request_t one = request("NIC.1", "Enabled");
  EXPECT_NE(cmr_set_bios_attribute_value(&one, 1), 0);
  EXPECT_NE(one.status, 0U);
  one.status = 0;
  ASSERT_EQ(cmr_api_initialize(), 0);
  ASSERT_EQ(cmr_api_initialize(), 0);
  ASSERT_EQ(cmr_api_uninitialize(), 0);
  EXPECT_EQ(cmr_set_bios_attribute_value(&one, 1), 0);
  ASSERT_EQ(cmr_api_uninitialize(), 0);
  EXPECT_NE(cmr_set_bios_attribute_value(&one, 1), 0);
  EXPECT_NE(cmr_api_uninitialize(), 0);
}

TEST_F(BiosConfigurationTest, AnEmptyListIsAccepted) {
  ASSERT_EQ(cmr_api_initialize(), 0);
  EXPECT_EQ(cmr_set_bios_attribute_value(nullptr, 0), 0);
  EXPECT_EQ(cmr_set_bios_attribute_value(nullptr, 1), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(BiosConfigurationTest, WithoutADatabaseEveryRequestFails) {
  lose_database();
  ASSERT_EQ(cmr_api_initialize(), 0);
  cmr_attribute_request_t one = request("NIC.1", "Enabled");
  EXPECT_EQ(cmr_set_bios_attribute_value(&one, 1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(one.status, static_cast<uint32_t>(ZYM_DB_STATUS_NO_DB));
}

}  // namespace
