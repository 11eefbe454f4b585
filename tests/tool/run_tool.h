// Runs the built zymdb as a user or a script does.
#ifndef ZYMDB_TESTS_TOOL_RUN_TOOL_H
#define ZYMDB_TESTS_TOOL_RUN_TOOL_H

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace zymdb::test {

using Words = std::vector<std::string>;

struct Outcome {
  int status = -1;  // exit status; 128 + n when signal n ended the program
  std::string out;
  std::string err;
};

// What a failing expectation prints.
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// Where a standard stream leads.
struct Stream {
  enum Kind { kFile, kTerminal, kDescriptor, kClosed } kind = kFile;
  unsigned short columns = 80;  // of a terminal
  int descriptor = -1;          // the caller's

  static Stream terminal(unsigned short columns = 80) { return {kTerminal, columns, -1}; }
  static Stream to(int descriptor) { return {kDescriptor, 0, descriptor}; }
  static Stream closed() { return {kClosed, 0, -1}; }
};

struct Setting {
  std::vector<std::pair<std::string, std::string>> environment =
      {};  // beside PATH, TERM=xterm and LC_ALL=C.UTF-8
  Stream out = {};
  Stream err = {};
  bool unprivileged = false;  // run as nobody, when the tests run as root
};

inline Setting printing_to(const Stream& out) {
  return {.out = out};
}

Outcome run_program(const Words& command, const Setting& setting = {});
Outcome run_tool(const Words& arguments, const Setting& setting = {});

// A folder of its own, with an inventory in it that the tool is told of.
class Workplace {
 public:
  std::filesystem::path path(const std::string& name) const { return folder_.path() / name; }
  std::filesystem::path inventory() const { return path("inventory.db"); }

  // `setting` with ZYMDB_INVENTORY added.
  Setting with_inventory(Setting setting = {}) const;

  Outcome tool(const Words& arguments, const Setting& setting = {}) const;

  // Makes an inventory with nothing in it: commands that only read make none.
  void create_inventory() const;

  // Fills the inventory with the example server.
  void collect_example() const;

  // The same as its running system shows it, which tells of ports, drives and firmware.
  void collect_example_system() const;

 private:
  void run(const Words& arguments) const;

  TemporaryFolder folder_;
};

// The recorded machine that the project brings along.
std::string example_lspci();
std::string example_smbios();

std::string read_file(const std::filesystem::path& path);
void write_file(const std::filesystem::path& path, const std::string& content);

// The lines of a text, without their ends. A last line without an end counts.
std::vector<std::string> lines_of(const std::string& text);

// Without blanks at both ends.
std::string stripped(const std::string& text);

}  // namespace zymdb::test

#endif
