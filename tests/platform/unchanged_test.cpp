// Reports of what the inventory holds already write nothing: not a byte reaches the files.
#include <fstream>
#include <iterator>
#include <thread>

#include "platform/client_fixture.h"

namespace {

class UnchangedTest : public ClientTest {
 protected:
  // The files' content and the times of their last writes.
  std::string files() const {
    std::string text;
    for (const char* name : {"inventory.db", "inventory.db-wal"}) {
      const auto path = folder() / name;
      std::ifstream file(path, std::ios::binary);
      text.append(std::istreambuf_iterator<char>(file), {});
      text.append(std::to_string(std::filesystem::last_write_time(path).time_since_epoch().count()));
    }
    return text;
  }
};

TEST_F(UnchangedTest, AChangeThatFindsNothingToChangeWritesNoByte) {
  given("AimDisks", {{"Location", "Bay 4"}, {"Temperature", 40}, {"Presence", 1}});
  const Set values(zym_db_get_content_values(handle()));
  zym_db_content_put_uint(values.get(), "Presence", 1);
  const std::string before = files();
  for (int round = 0; round < 100; ++round) {
    EXPECT_EQ(
        zym_db_update(handle(), "AimDisks", values.get(), "_id=1 AND (Presence!=1)", nullptr, 0, nullptr), 0);
    EXPECT_EQ(zym_db_delete(handle(), "AimDisks", "Location=\"Bay 5\"", nullptr, 0, nullptr), 0);
  }
  EXPECT_EQ(files(), before);
}

TEST_F(UnchangedTest, AChangeThatFindsNothingWaitsForNoWriter) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("AimDisks", {{"Location", "Bay 4"}});
  std::thread([] {
    const Set values(zym_db_get_content_values(get_dmdb_handle()));
    zym_db_content_put_uint(values.get(), "Presence", 1);
    EXPECT_EQ(
        zym_db_update(get_dmdb_handle(), "AimDisks", values.get(), "Location=\"Bay 5\"", nullptr, 0, nullptr),
        0);
  }).join();
  ASSERT_EQ(zym_db_rollback(handle()), 0);
}

TEST_F(UnchangedTest, AChangeThatFindsSomethingWrites) {
  given("AimDisks", {{"Presence", 0}});
  const std::string before = files();
  const Set values(zym_db_get_content_values(handle()));
  zym_db_content_put_uint(values.get(), "Presence", 1);
  EXPECT_EQ(zym_db_update(handle(), "AimDisks", values.get(), "_id=1 AND (Presence!=1)", nullptr, 0, nullptr),
            0);
  EXPECT_NE(files(), before);
}

}  // namespace
