// A database of MariaDB's for one test, on the server whose folder ZYMDB_TEST_SERVER names.
#ifndef ZYMDB_TESTS_SUPPORT_TEST_DATABASE_H
#define ZYMDB_TESTS_SUPPORT_TEST_DATABASE_H

#include <string>

class TestDatabase {
 public:
  // A new, empty one, which goes with the object.
  TestDatabase();
  ~TestDatabase();
  TestDatabase(const TestDatabase&) = delete;
  TestDatabase& operator=(const TestDatabase&) = delete;

  // Whether the test is to run on one.
  static bool is_wanted();

  // For ZYMDB_INVENTORY.
  std::string address() const { return address_of(name_); }
  static std::string address_of(const std::string& database);

  // Runs a statement as the server's owner. What it finds: a line for each row, its values separated by "|".
  std::string run(const std::string& sql) const;

  const std::string& name() const { return name_; }

 private:
  std::string name_;
};

#endif
