#include "collect/sources/pci/lspci_dump.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kBytesPerLine = 16;
constexpr size_t kLargestConfig = 4096;

bool is_hex_digit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// "10:" to "ff0:" at the start: a hex line. A slot line has a digit where these have a blank or the end.
bool is_hex_line(std::string_view line) {
  const size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon < 2 || colon > 3) return false;
  return std::all_of(line.begin(), line.begin() + static_cast<ptrdiff_t>(colon), is_hex_digit) &&
         (line.size() == colon + 1 || line[colon + 1] == ' ');
}

class DumpReader {
 public:
  explicit DumpReader(std::string_view name) : name_(name) {}

  void line(std::string_view line) {
    ++line_number_;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) {
      end_function();
    } else if (is_hex_line(line)) {
      hex_line(line);
    } else if (line.front() != ' ' && line.front() != '\t') {
      slot_line(line);
    } else if (!open_) {
      fail("a detail line outside a function");
    }
  }

  std::vector<PciFunction> finish() {
    if (open_) fail("the dump ends inside function " + to_string(address_) + " (cut short?)");
    if (functions_.empty()) fail("no PCI functions in the dump");
    return std::move(functions_);
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw SourceError::at_line(name_, std::max<size_t>(line_number_, 1), reason);
  }

  void slot_line(std::string_view line) {
    const std::string_view slot = line.substr(0, line.find(' '));
    const auto address = parse_pci_address(slot);
    if (!address || slot.find('.') == std::string_view::npos || slot.size() == line.size()) {
      fail("neither a slot line (\"00:1f.2 ...\") nor a hex line (\"00: 86 80 ...\") of lspci -x");
    }
    if (open_) fail("function " + to_string(address_) + " is not ended by an empty line");
    if (!seen_.insert(*address).second) fail("function " + to_string(*address) + " is there twice");
    address_ = *address;
    config_.clear();
    open_ = true;
  }

  void hex_line(std::string_view line) {
    if (!open_) fail("a hex line outside a function");
    const size_t colon = line.find(':');
    if (hex_number(line.substr(0, colon)) != config_.size()) fail("a hex line is missing or out of order");
    if (config_.size() == kLargestConfig) fail("more than 4096 bytes of configuration space");
    line.remove_prefix(colon + 1);
    for (size_t i = 0; i < kBytesPerLine; ++i, line.remove_prefix(3)) {
      const auto byte = line.size() >= 3 && line[0] == ' ' ? hex_number(line.substr(1, 2)) : std::nullopt;
      if (!byte) fail("a hex line without 16 two-digit bytes (cut short?)");
      config_.push_back(static_cast<uint8_t>(*byte));
    }
    if (!trimmed(line).empty()) fail("a hex line with more than 16 bytes");
  }

  void end_function() {
    if (!open_) return;
    if (config_.empty()) fail("function " + to_string(address_) + " has no bytes: the dump needs lspci -x");
    if (!is_config_size(config_.size())) {
      fail("function " + to_string(address_) + " has " + std::to_string(config_.size()) +
           " bytes, not 64, 128, 256 or 4096");
    }
    PciFunction function;
    function.address = address_;
    decode_config(config_, function);
    functions_.push_back(std::move(function));
    open_ = false;
  }

  std::string_view name_;
  size_t line_number_ = 0;
  bool open_ = false;
  PciAddress address_;
  std::vector<uint8_t> config_;
  std::set<PciAddress> seen_;
  std::vector<PciFunction> functions_;
};

}  // namespace

std::vector<PciFunction> parse_lspci_dump(std::string_view text, std::string_view name) {
  DumpReader reader(name);
  // A last line without its line end was cut off; where nothing is missing, that is the text's end.
  for (size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    reader.line(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  if (!text.empty()) reader.line(text);
  return reader.finish();
}

}  // namespace zymdb::collect
