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
constexpr size_t kHeaderSize = 64;
constexpr size_t kCardBusHeaderSize = 128;
constexpr size_t kConventionalSize = 256;
constexpr size_t kLargestConfig = 4096;
constexpr size_t kLongestLine = 65536;

constexpr std::string_view kTools[] = {"pcilib: ", "lspci: "};

// -1 for what is no digit.
constexpr int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// A dump has millions of them.
constexpr int hex_byte(char high, char low) {
  return hex_digit(high) < 0 || hex_digit(low) < 0 ? -1 : hex_digit(high) * 16 + hex_digit(low);
}

bool is_hex_digit(char c) {
  return hex_digit(c) >= 0;
}

// "10:" to "ff0:" at the start: a hex line. A slot line has a digit where these have a blank or the end.
bool is_hex_line(std::string_view line) {
  const size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon < 2 || colon > 3) return false;
  return std::all_of(line.begin(), line.begin() + static_cast<ptrdiff_t>(colon), is_hex_digit) &&
         (line.size() == colon + 1 || line[colon + 1] == ' ');
}

bool is_of_a_tool(std::string_view line) {
  return std::ranges::any_of(kTools, [line](std::string_view tool) { return line.starts_with(tool); });
}

class DumpReader {
 public:
  explicit DumpReader(std::string_view name) : name_(name) {}

  // Any part of the text; the parts come in order.
  void take(std::string_view text) {
    for (size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
      append(text.substr(0, end));
      line(line_);
      line_.clear();
      text.remove_prefix(end + 1);
    }
    append(text);
  }

  // A last line without its line end was cut off; where nothing is missing, that is the text's end.
  std::vector<PciFunction> finish() {
    if (!line_.empty()) line(line_);
    if (open_) end_last_function();
    if (functions_.empty()) fail("no PCI functions in the dump");
    return std::move(functions_);
  }

  void tell(std::vector<std::string>& notices) const {
    if (skipped_ == 0) return;
    notices.push_back(skipped_line_ + (skipped_ == 1 ? ", which a tool wrote in between"
                                                     : ", and " + std::to_string(skipped_ - 1) +
                                                           " more lines that tools wrote in between"));
  }

 private:
  void append(std::string_view text) {
    if (line_.size() + text.size() > kLongestLine) {
      ++line_number_;
      fail("a line of more than " + std::to_string(kLongestLine) + " bytes");
    }
    line_ += text;
  }

  void line(std::string_view line) {
    ++line_number_;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) {
      end_function();
    } else if (is_of_a_tool(line)) {
      skip(line);
    } else if (is_hex_line(line)) {
      hex_line(line);
    } else if (line.front() != ' ' && line.front() != '\t') {
      slot_line(line);
    } else if (!open_) {
      fail("a detail line outside a function");
    }
  }

  void skip(std::string_view line) {
    if (skipped_++ != 0) return;
    skipped_line_ = std::string(name_) + ", line " + std::to_string(line_number_) + ": skipped \"" +
                    known_text(line).value_or("") + "\"";
  }

  [[noreturn]] void fail(const std::string& reason) const {
    throw SourceError::at_line(name_, std::max<size_t>(line_number_, 1), reason);
  }

  void slot_line(std::string_view line) {
    const std::string_view slot = line.substr(0, line.find(' '));
    const auto address = parse_pci_address(slot);
    if (!address || slot.find('.') == std::string_view::npos || slot.size() == line.size()) {
      fail("neither a slot line (\"00:1f.2 ...\") nor a hex line (\"00: 86 80 ...\") of lspci -x");
    }
    if (open_) {
      require_bytes();
      fail("function " + to_string(address_) + " is not ended by an empty line");
    }
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
      const int byte = line.size() >= 3 && line[0] == ' ' ? hex_byte(line[1], line[2]) : -1;
      if (byte < 0) fail("a hex line without 16 two-digit bytes (cut short?)");
      config_.push_back(static_cast<uint8_t>(byte));
    }
    if (!trimmed(line).empty()) fail("a hex line with more than 16 bytes");
  }

  void require_bytes() const {
    if (!config_.empty()) return;
    fail("function " + to_string(address_) + " has no bytes: make the dump with \"lspci -xxxx\"");
  }

  void end_last_function() {
    if (functions_.empty()) require_bytes();
    if (!may_end()) fail("the dump ends inside function " + to_string(address_) + " (cut short?)");
    end_function();
  }

  // Whether the bytes of the last function may be all that it has: as many as those of the others, or fewer
  // as their kind has them.
  bool may_end() const {
    const size_t size = config_.size();
    if (!is_config_size(size) || (size == kCardBusHeaderSize && !is_card_bus(config_))) return false;
    if (size >= largest_) return true;
    if (size == kHeaderSize) return largest_ == kCardBusHeaderSize;
    PciFunction function;
    decode_config(config_, function);
    return size == kConventionalSize && function.port_type == PortType::kUnknown;
  }

  void end_function() {
    if (!open_) return;
    require_bytes();
    if (!is_config_size(config_.size())) {
      fail("function " + to_string(address_) + " has " + std::to_string(config_.size()) +
           " bytes, not 64, 128, 256 or 4096");
    }
    PciFunction function;
    function.address = address_;
    decode_config(config_, function);
    functions_.push_back(std::move(function));
    largest_ = std::max(largest_, config_.size());
    open_ = false;
  }

  std::string_view name_;
  size_t line_number_ = 0;
  std::string line_;  // as far as it has come
  size_t skipped_ = 0;
  std::string skipped_line_;  // the first one, as it is told
  bool open_ = false;
  PciAddress address_;
  std::vector<uint8_t> config_;
  size_t largest_ = 0;  // of the configuration spaces so far
  std::set<PciAddress> seen_;
  std::vector<PciFunction> functions_;
};

}  // namespace

std::vector<PciFunction> parse_lspci_dump(std::string_view text, std::string_view name,
                                          std::vector<std::string>* notices) {
  DumpReader reader(name);
  reader.take(text);
  auto functions = reader.finish();
  if (notices != nullptr) reader.tell(*notices);
  return functions;
}

std::vector<PciFunction> read_lspci_dump(const std::string& path, std::vector<std::string>& notices) {
  DumpReader reader(path);
  read_source_in_parts(path, [&reader](std::string_view part) { reader.take(part); });
  auto functions = reader.finish();
  reader.tell(notices);
  return functions;
}

}  // namespace zymdb::collect
