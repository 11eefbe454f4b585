// An inventory whose journal is looked at.
#ifndef ZYMDB_TESTS_PLATFORM_JOURNAL_FIXTURE_H
#define ZYMDB_TESTS_PLATFORM_JOURNAL_FIXTURE_H

#include <string>

#include "platform/client_fixture.h"
#include "support/sql.h"

class JournalTest : public ClientTest {
 protected:
  static uint64_t generation() {
    uint64_t number = 0;
    EXPECT_EQ(zym_db_generation(handle(), &number), 0);
    return number;
  }

  // The accounts in the order of their generations, one a line: "3 {…}", "4 NULL".
  static std::string accounts() { return rows("Journal", {"_id", "Changes"}); }

  std::string inventory() const { return folder() / "inventory.db"; }

  static std::string found_in(const std::string& file, const std::string& sql) {
    return run_sql_on(file, sql);
  }

  static int update(const char* table, const char* where, std::initializer_list<Column> row) {
    const Set values = set_of(row);
    return zym_db_update(handle(), table, values.get(), where, nullptr, 0, nullptr);
  }
  static int remove(const char* table, const char* where) {
    return zym_db_delete(handle(), table, where, nullptr, 0, nullptr);
  }

  static Set set_of(std::initializer_list<Column> row) {
    Set values(zym_db_get_content_values(handle()));
    for (const Column& column : row) {
      if (const auto* const number = std::get_if<int64_t>(&column.value))
        zym_db_content_put_int(values.get(), column.name, static_cast<int>(*number));
      else if (const auto* const text = std::get_if<std::string>(&column.value))
        zym_db_content_put_text(values.get(), column.name, text->c_str());
      else
        zym_db_content_put_null(values.get(), column.name);
    }
    return values;
  }

  // Opens another inventory in place of this one; the next handle() is its.
  static void open_instead(const std::string& file) {
    zym_db_close(handle());
    setenv("ZYMDB_INVENTORY", file.c_str(), 1);
  }
};

#endif
