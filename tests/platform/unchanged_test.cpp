// Reports of what the inventory holds already write nothing: not a byte reaches the files.
#include <thread>

#include "platform/client_fixture.h"

namespace {

using UnchangedTest = ClientTest;

TEST_F(UnchangedTest, AChangeThatFindsNothingToChangeWritesNoByte) {
  given("AimDisks", {{"Location", "Bay 4"}, {"Temperature", 40}, {"Presence", 1}});
  const Set values(zym_db_get_content_values(handle()));
  zym_db_content_put_uint(values.get(), "Presence", 1);
  const std::string before = written();
  for (int round = 0; round < 100; ++round) {
    EXPECT_EQ(
        zym_db_update(handle(), "AimDisks", values.get(), "_id=1 AND (Presence!=1)", nullptr, 0, nullptr), 0);
    EXPECT_EQ(zym_db_delete(handle(), "AimDisks", "Location=\"Bay 5\"", nullptr, 0, nullptr), 0);
  }
  EXPECT_EQ(written(), before);
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
  const std::string before = written();
  const Set values(zym_db_get_content_values(handle()));
  zym_db_content_put_uint(values.get(), "Presence", 1);
  EXPECT_EQ(zym_db_update(handle(), "AimDisks", values.get(), "_id=1 AND (Presence!=1)", nullptr, 0, nullptr),
            0);
  EXPECT_NE(written(), before);
}

}  // namespace
