#include <algorithm>
#include <cctype>
#include <memory>
#include <optional>

#include "commands/commands.h"
#include "common/source_file.h"
#include "records/json.h"
#include "records/storage.h"
#include "terminal/failure.h"
#include "terminal/table.h"
#include "terminal/terminal.h"
#include "zymdb_storage.h"

namespace zymdb::tool {
namespace {

using Record = _ZYMDB_AimDisk;

constexpr char kFooter[] =
    "FILE holds the vital product data as the drive's management interface returns them, at least 256 "
    "bytes,\n"
    "either as they are or as hexadecimal digits.\n"
    "\n"
    "Examples:\n"
    "  zymdb vpd drive.bin\n"
    "  zymdb vpd drive.hex --json | jq '.vpd[].SerialNo'";

constexpr char kDateFooter[] =
    "CODE is two digits of the week and two of the year.\n"
    "\n"
    "Examples:\n"
    "  zymdb drive-date 0116";

struct VpdOptions {
  std::string path;
  bool json = false;
};

// The bytes that hexadecimal digits stand for; nothing when the text holds anything but digits and space.
std::optional<std::string> from_hex(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isxdigit(byte))
      digits += c;
    else if (!std::isspace(byte))
      return std::nullopt;
  }
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

Record decode(const std::string& path) {
  const std::string content = read_source(path);
  const std::string image = from_hex(content).value_or(content);
  Record drive{};
  const int status = parse_nvme_drive_vpd(reinterpret_cast<const unsigned char*>(image.data()),
                                          static_cast<unsigned>(image.size()), &drive);
  if (status == 0) return drive;
  throw Failure(path + (image.size() < 256 ? ": a drive's data have 256 bytes at least, this has " +
                                                 std::to_string(image.size())
                                           : ": not a drive's vital product data"));
}

void print(const VpdOptions& options) {
  const auto type = records::drive_identity([&] { return std::vector{decode(options.path)}; });
  if (options.json)
    write_output(records::to_json(type.name, type.list(records::all_fields(type))));
  else
    write_output(render_table(type.list(records::default_fields(type)), {}));
}

void print_date(const std::string& code) {
  char date[16];
  vpd_manuf_date_to_ymd(code.c_str(), date, sizeof date);
  write_output(std::string(date) + "\n");
}

std::string check_code(const std::string& code) {
  const bool is_code =
      code.size() == 4 && std::ranges::all_of(code, [](unsigned char c) { return std::isdigit(c) != 0; });
  return is_code ? "" : "'" + code + "' is not four digits";
}

}  // namespace

void add_vpd(CommandTree& tree) {
  const auto options = std::make_shared<VpdOptions>();
  auto& command = *tree.app.add_subcommand("vpd", "Decode the vital product data of an NVMe drive");
  command.footer(kFooter);
  command.add_option("FILE", options->path, "The data, as bytes or hexadecimal digits")
      ->required()
      ->type_name("");
  command.add_flag("--json", options->json, "Print JSON");
  command.callback([options] { print(*options); });
}

void add_drive_date(CommandTree& tree) {
  const auto code = std::make_shared<std::string>();
  auto& command = *tree.app.add_subcommand("drive-date", "The date that a drive's date code stands for");
  command.footer(kDateFooter);
  command.add_option("CODE", *code, "Week and year, as \"0116\"")
      ->required()
      ->type_name("")
      ->check(check_code);
  command.callback([code] { print_date(*code); });
}

}  // namespace zymdb::tool
