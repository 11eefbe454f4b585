// Files whose content is damaged: the inventory, the property database, the platform tables.
#include <thread>

#include "controller/platform_tables.h"
#include "controller/property_database.h"
#include "platform/media_fixture.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_pci_settings.h"

namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class DamageTest : public MediaTest, public testing::WithParamInterface<Damage> {};

INSTANTIATE_TEST_SUITE_P(File, DamageTest, testing::ValuesIn(damages()),
                         [](const auto& damage) { return damage.param.name; });

TEST_P(DamageTest, IsAStatusUntilTheFileIsReplaced) {
  make_backup(5);
  close_all();
  GetParam().inflict(file());
  const std::string log = log_of([] {
    EXPECT_THAT(read(), testing::AnyOf(ZYM_DB_STATUS_NO_DB, kDamaged));
    EXPECT_THAT(save(6), testing::AnyOf(ZYM_DB_STATUS_NO_DB, kDamaged));
  });
  EXPECT_THAT(log, HasSubstr(file() + ": " + GetParam().cause));
  put_backup_back();
  EXPECT_EQ(value(), 5);
  EXPECT_EQ(save(6), 0);
  EXPECT_EQ(integrity_of(file()), "ok");
}

// What a thread has read already it need not read again; another one does.
TEST_P(DamageTest, UnderAnOpenDatabaseIsAStatusUntilTheFileIsReplaced) {
  make_backup(5);
  close_all();
  given("PCIs", {{"BusNo", 1}});
  GetParam().inflict(file());
  const std::string log = log_of([] { std::thread([] { EXPECT_EQ(read(), kDamaged); }).join(); });
  EXPECT_THAT(log, HasSubstr(file() + ": " + GetParam().cause));
  put_backup_back();
  EXPECT_EQ(save(7), 0);
  EXPECT_EQ(count("PCIs", "1"), 0);
  EXPECT_EQ(value(), 7);
  EXPECT_EQ(integrity_of(file()), "ok");
}

// ---- The property database and the platform tables -----------------------------------------------------

class PropertyMediaTest : public MediaTest {
 protected:
  static constexpr char kPath[] = "/system/bays";
  static constexpr char kName[] = "inventory-properties.db";

  PropertyMediaTest() { given_property(kPath, {"\4\0\0\0", 4}); }

  // A thread of its own opens the database anew.
  static int property(unsigned& number) {
    int status = 0;
    std::thread([&] { status = propdb_get_dword(kPath, &number); }).join();
    return status;
  }
};

TEST_F(PropertyMediaTest, DamageIsAStatusUntilTheFileIsReplaced) {
  fs::copy_file(file(kName), file("backup.db"));
  for (const Damage& damage : damages()) {
    damage.inflict(file(kName));
    unsigned number = 9;
    const std::string log = log_of(
        [&] { EXPECT_THAT(property(number), testing::AnyOf(ZYM_DB_STATUS_NO_DB, kDamaged)) << damage; });
    EXPECT_EQ(number, 9U) << damage;
    EXPECT_THAT(log, HasSubstr(file(kName) + ": " + damage.cause)) << damage;
    fs::copy_file(file("backup.db"), file("copy.db"));
    fs::rename(file("copy.db"), file(kName));
    EXPECT_EQ(property(number), 0) << damage;
    EXPECT_EQ(number, 4U) << damage;
  }
}

TEST_F(PropertyMediaTest, FailingDevicesAreStatuses) {
  for (const DeviceFault& fault : {DeviceFault{"open", EMFILE, 0, "Too many open files"},
                                   DeviceFault{"pread64", EIO, 0, "Input/output error"}}) {
    unsigned number = 9;
    const std::string log = log_of([&] {
      const FailingCall failing(fault.call, fault.error);
      EXPECT_EQ(property(number), ZYM_DB_STATUS_NO_DB) << fault.call;
    });
    EXPECT_THAT(log, HasSubstr("cannot open the properties database " + file(kName) + ": "));
    EXPECT_THAT(log, HasSubstr(fault.cause));
    EXPECT_EQ(property(number), 0);
  }
}

// The settings' own table is written before the BIOS configuration manager keeps its copy.
TEST_F(PropertyMediaTest, ASaveThatTheManagerCannotKeepSaysSoInEveryEntry) {
  ZYMDB_PCI_Config_Setting setting{};
  std::strcpy(setting.SettingID, "Net.Speed");
  std::strcpy(setting.PendingValue, "old");
  ASSERT_EQ(extract_PCISetting_info(&setting), 0);
  ZYMDB_PCI_Config_Set entry{};
  std::strcpy(entry.SettingID, "Net.Speed");
  std::strcpy(entry.PendingValue, "new");
  fs::rename(file(kName), file("aside.db"));
  fs::create_directory(file(kName));
  const std::string log =
      log_of([&] { EXPECT_EQ(zymdb_save_pci_configSet_list(&entry, 1), ZYMDB_PCI_SETTING_BIOS_SET_FAIL); });
  EXPECT_EQ(uint32_t{entry.Result}, static_cast<uint32_t>(ZYM_DB_STATUS_NO_DB));
  EXPECT_THAT(log, HasSubstr("cannot open the properties database " + file(kName) + ": it is not a file"));
  fs::remove(file(kName));
  fs::rename(file("aside.db"), file(kName));
  EXPECT_EQ(zymdb_save_pci_configSet_list(&entry, 1), 0);
  EXPECT_EQ(uint32_t{entry.Result}, 0U);
}

TEST_F(MediaTest, APlatformTableThatCannotBeReadIsNamedWithItsCause) {
  const std::string table = file("tables");
  setenv("ZYMDB_PLATFORM_TABLES", table.c_str(), 1);
  const auto log = [] { return log_of([] { EXPECT_EQ(zymdb_is_amd(), 0); }); };
  EXPECT_THAT(log(), HasSubstr(table + ": No such file or directory"));
  fs::create_directory(table);
  EXPECT_THAT(log(), HasSubstr(table + ": Is a directory"));
  fs::remove(table);
  for (const size_t size : {size_t{0}, size_t{27}, size_t{29}}) {
    write_file(std::string(size, 'x'), "tables");
    EXPECT_THAT(log(), HasSubstr(table + ": no platform table of 28 bytes")) << size;
  }
  write_file(std::string(9, '\0') + '\x80' + std::string(18, '\0'), "tables");
  EXPECT_EQ(zymdb_is_amd(), 1);
  unsetenv("ZYMDB_PLATFORM_TABLES");
}

}  // namespace
