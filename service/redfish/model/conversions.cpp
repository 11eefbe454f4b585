#include "service/redfish/model/conversions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <span>

#include "documents/part_names.h"

namespace zymdb::service::redfish {
namespace {

std::optional<uint64_t> number_of(const Value& value) {
  if (const auto* const number = std::get_if<uint64_t>(&value)) return *number;
  const auto* const is_signed = std::get_if<int64_t>(&value);
  if (is_signed != nullptr && *is_signed >= 0) return static_cast<uint64_t>(*is_signed);
  return {};
}

const std::string* text_of(const Value& value) {
  return std::get_if<std::string>(&value);
}

// Whether the text is written like the form, whose "9" stand for digits and whose "F" for hexadecimal ones.
bool has_form(std::string_view text, std::string_view form) {
  const auto is_like = [](char c, char like) {
    const bool is_digit = c >= '0' && c <= '9';
    if (like == 'F') return is_digit || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    return like == '9' ? is_digit : c == like;
  };
  return std::ranges::equal(text, form, is_like);
}

Json hex(const Value& value, int digits) {
  const auto number = number_of(value);
  if (!number || *number >> (4 * digits) != 0) return nullptr;
  char text[24];
  std::snprintf(text, sizeof text, "0x%0*llX", digits, static_cast<unsigned long long>(*number));
  return text;
}

// Which word a code or a text has in the schema.
struct Code {
  uint64_t first;
  uint64_t last;
  const char* word;
};
struct Word {
  std::string_view text;
  const char* word;
};

Json word_of_code(std::span<const Code> codes, const Value& value) {
  const auto number = number_of(value);
  for (const Code& code : codes) {
    if (number && *number >= code.first && *number <= code.last) return code.word;
  }
  return nullptr;
}

Json word_of_text(std::span<const Word> words, const Value& value) {
  const std::string* const text = text_of(value);
  for (const Word& word : words) {
    if (text != nullptr && *text == word.text) return word.word;
  }
  return nullptr;
}

// So many bytes in hexadecimal, between colons or dashes; in capitals.
Json byte_address(const Value& value, size_t bytes) {
  const std::string* const text = text_of(value);
  if (text == nullptr || text->size() != bytes * 3 - 1) return nullptr;
  std::string address;
  for (size_t at = 0; at < text->size(); ++at) {
    const char c = (*text)[at];
    if (at % 3 == 2) {
      if (c != ':' && c != '-') return nullptr;
      address += ':';
    } else if (c >= 'a' && c <= 'f') {
      address += static_cast<char>(c - 'a' + 'A');
    } else if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F')) {
      address += c;
    } else {
      return nullptr;
    }
  }
  return address;
}

constexpr Code kDeviceClasses[] = {
    {0x00, 0x00, "UnclassifiedDevice"},
    {0x01, 0x01, "MassStorageController"},
    {0x02, 0x02, "NetworkController"},
    {0x03, 0x03, "DisplayController"},
    {0x04, 0x04, "MultimediaController"},
    {0x05, 0x05, "MemoryController"},
    {0x06, 0x06, "Bridge"},
    {0x07, 0x07, "CommunicationController"},
    {0x08, 0x08, "GenericSystemPeripheral"},
    {0x09, 0x09, "InputDeviceController"},
    {0x0a, 0x0a, "DockingStation"},
    {0x0b, 0x0b, "Processor"},
    {0x0c, 0x0c, "SerialBusController"},
    {0x0d, 0x0d, "WirelessController"},
    {0x0e, 0x0e, "IntelligentController"},
    {0x0f, 0x0f, "SatelliteCommunicationsController"},
    {0x10, 0x10, "EncryptionController"},
    {0x11, 0x11, "SignalProcessingController"},
    {0x12, 0x12, "ProcessingAccelerators"},
    {0x13, 0x13, "NonEssentialInstrumentation"},
    {0x40, 0x40, "Coprocessor"},
    {0xff, 0xff, "UnassignedClass"},
};

// SMBIOS's processor types and families; families that are not listed tell nothing.
constexpr Code kProcessorTypes[] = {{3, 3, "CPU"}, {4, 4, "CPU"}, {5, 5, "DSP"}, {6, 6, "GPU"}};
constexpr Code kArchitectures[] = {
    {0x0b, 0x15, "x86"},      {0x18, 0x1f, "x86"},  {0x20, 0x27, "Power"}, {0x28, 0x2f, "x86"},
    {0x38, 0x3f, "x86"},      {0x40, 0x45, "MIPS"}, {0x46, 0x4f, "x86"},   {0x66, 0x68, "x86"},
    {0x69, 0x69, "ARM"},      {0x6a, 0x6f, "x86"},  {0x82, 0x82, "IA-64"}, {0x83, 0x8f, "x86"},
    {0xa1, 0xb3, "x86"},      {0xb5, 0xb7, "x86"},  {0xb8, 0xb8, "IA-64"}, {0xb9, 0xc7, "x86"},
    {0xcd, 0xd0, "x86"},      {0xd2, 0xef, "x86"},  {0x100, 0x102, "ARM"}, {0x118, 0x119, "ARM"},
    {0x200, 0x202, "RISC-V"},
};

constexpr Code kMemoryTypes[] = {
    {0x09, 0x09, "ROM"},
    {0x0f, 0x0f, "SDRAM"},
    {0x12, 0x12, "DDR"},
    {0x13, 0x13, "DDR2"},
    {0x14, 0x14, "DDR2_SDRAM_FB_DIMM"},
    {0x18, 0x18, "DDR3"},
    {0x1a, 0x1a, "DDR4"},
    {0x1d, 0x1d, "LPDDR3_SDRAM"},
    {0x1e, 0x1e, "LPDDR4_SDRAM"},
    {0x1f, 0x1f, "Logical"},
    {0x20, 0x20, "HBM"},
    {0x21, 0x21, "HBM2"},
    {0x22, 0x22, "DDR5"},
    {0x23, 0x23, "LPDDR5_SDRAM"},
    {0x24, 0x24, "HBM3"},
};

constexpr Word kSecurityStates[] = {
    {"Disabled", "Disabled"}, {"Unlocked", "Unlocked"}, {"Locked", "Locked"}, {"Frozen", "Frozen"}};

constexpr Word kDriveProtocols[] = {
    {"SATA", "SATA"},     {"SAS", "SAS"},       {"NVMe", "NVMe"},     {"EDSFF NVMe", "NVMe"},
    {"M.2 SATA", "SATA"}, {"M.2 NVMe", "NVMe"}, {"7MM SATA", "SATA"}, {"7MM NVMe", "NVMe"},
};
constexpr Code kFormFactors[] = {{0x30, 0x30, "M2"}, {0x50, 0x50, "EDSFF"}};
constexpr Word kMediaTypes[] = {{"SSD", "SSD"}, {"HDD", "HDD"}};

constexpr Code kLinkStatuses[] = {{1, 1, "LinkUp"}, {2, 2, "LinkDown"}};
constexpr Word kTechnologies[] = {{"Ethernet", "Ethernet"}, {"IB", "InfiniBand"}, {"FC", "FibreChannel"}};
constexpr Word kTransceivers[] = {
    {"SFP", "SFP"},        {"SFP+", "SFPPlus"},  {"SFP28", "SFP28"},   {"QSFP", "QSFP"},
    {"QSFP+", "QSFPPlus"}, {"QSFP28", "QSFP28"}, {"QSFP56", "QSFP56"}, {"QSFP-DD", "QSFPDD"},
};

// SMBIOS's slot types and widths.
constexpr Code kSlotTypes[] = {{0x14, 0x18, "M2"}, {0x20, 0x20, "U2"},        {0x21, 0x22, "Mini"},
                               {0x24, 0x25, "U2"}, {0x26, 0x26, "OCP3Small"}, {0x27, 0x27, "OCP3Large"}};
constexpr Code kSlotGenerations[] = {
    {0xa5, 0xaa, "Gen1"}, {0xab, 0xb0, "Gen2"}, {0x20, 0x20, "Gen2"}, {0xb1, 0xb6, "Gen3"},
    {0x24, 0x24, "Gen3"}, {0xb8, 0xbd, "Gen4"}, {0x25, 0x25, "Gen4"}, {0xbe, 0xc3, "Gen5"},
};
constexpr std::array<std::pair<uint64_t, int>, 7> kSlotLanes = {
    {{8, 1}, {9, 2}, {10, 4}, {11, 8}, {12, 12}, {13, 16}, {14, 32}}};

constexpr std::array<std::pair<std::string_view, double>, 6> kUnits = {
    {{"B", 1}, {"KB", 1e3}, {"MB", 1e6}, {"GB", 1e9}, {"TB", 1e12}, {"PB", 1e15}}};

}  // namespace

Json as_text(const Value& value) {
  const std::string* const text = text_of(value);
  return text != nullptr && !text->empty() ? Json(documents::utf8_text(*text)) : Json();
}

// Readers keep numbers as floating point, which has no room for more.
Json as_number(const Value& value) {
  constexpr uint64_t kMost = uint64_t{1} << 53;
  const auto number = number_of(value);
  return number && *number <= kMost ? Json(*number) : Json();
}

Json as_positive(const Value& value) {
  return number_of(value) == uint64_t{0} ? Json() : as_number(value);
}

Json as_percent(const Value& value) {
  return number_of(value).value_or(101) > 100 ? Json() : as_number(value);
}

Json number_of_digits(const Value& value) {
  const std::string* const text = text_of(value);
  uint64_t number = 0;
  if (text == nullptr || text->empty()) return nullptr;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
  return error == std::errc() && end == text->data() + text->size() ? as_number(number) : Json();
}

Json as_flag(const Value& value) {
  const auto number = number_of(value);
  return number && *number <= 1 ? Json(*number == 1) : Json();
}

Json as_count_of_one(const Value& value) {
  Json number = as_positive(value);
  return number.is_null() ? Json() : Json::array({std::move(number)});
}

Json as_hex1(const Value& value) {
  return hex(value, 1);
}
Json as_hex2(const Value& value) {
  return hex(value, 2);
}
Json as_hex4(const Value& value) {
  return hex(value, 4);
}
Json as_hex6(const Value& value) {
  return hex(value, 6);
}

Json as_uuid(const Value& value) {
  const std::string* const text = text_of(value);
  return text != nullptr && has_form(*text, "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF") ? Json(*text) : Json();
}

Json as_mac_address(const Value& value) {
  return byte_address(value, 6);
}
Json as_world_wide_name(const Value& value) {
  return byte_address(value, 8);
}

Json as_port_guid(const Value& value) {
  const Json name = byte_address(value, 8);
  if (!name.is_string()) return nullptr;
  std::string guid;
  for (size_t at = 0; const char c : name.get_ref<const std::string&>()) {
    // Of the colons between eight bytes, every other one.
    if (++at % 6 != 3) guid += c;
  }
  return guid;
}

Json gbit_of_mbit(const Value& value) {
  const auto number = number_of(value);
  if (!number || *number == 0) return nullptr;
  return *number % 1000 == 0 ? Json(*number / 1000) : Json(static_cast<double>(*number) / 1000);
}

Json mebibytes_of_bytes(const Value& value) {
  const auto number = number_of(value);
  return number ? Json(*number >> 20) : Json();
}

Json bytes_of_capacity(const Value& value) {
  const std::string* const text = text_of(value);
  if (text == nullptr) return nullptr;
  double number = 0;
  const auto [end, error] =
      std::from_chars(text->data(), text->data() + text->size(), number, std::chars_format::fixed);
  if (error != std::errc() || !(number > 0)) return nullptr;
  std::string_view rest(end, static_cast<size_t>(text->data() + text->size() - end));
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  for (const auto& [unit, factor] : kUnits) {
    if (rest == unit && number * factor < 9e15) return static_cast<int64_t>(std::llround(number * factor));
  }
  return nullptr;
}

Json time_of_date(const Value& value) {
  const std::string* const text = text_of(value);
  std::string year, month, day;
  if (text != nullptr && has_form(*text, "99/99/9999")) {
    year = text->substr(6), month = text->substr(0, 2), day = text->substr(3, 2);
  } else if (text != nullptr && has_form(*text, "9999-99-99")) {
    year = text->substr(0, 4), month = text->substr(5, 2), day = text->substr(8);
  } else {
    return nullptr;
  }
  if (month < "01" || month > "12" || day < "01" || day > "31") return nullptr;
  return year + "-" + month + "-" + day + "T00:00:00Z";
}

Json pcie_generation(const Value& value) {
  const auto number = number_of(value);
  return number && *number >= 1 && *number <= 6 ? Json("Gen" + std::to_string(*number)) : Json();
}

Json device_class(const Value& value) {
  const auto number = number_of(value);
  return number ? word_of_code(kDeviceClasses, *number >> 16) : Json();
}

Json processor_type(const Value& value) {
  return word_of_code(kProcessorTypes, value);
}
Json processor_architecture(const Value& value) {
  return word_of_code(kArchitectures, value);
}
Json memory_device_type(const Value& value) {
  return word_of_code(kMemoryTypes, value);
}

Json memory_rank(const Value& value) {
  const auto number = number_of(value);
  return number && (*number & 0xfu) != 0 ? Json(*number & 0xfu) : Json();
}

Json security_state(const Value& value) {
  return word_of_text(kSecurityStates, value);
}
Json drive_protocol(const Value& value) {
  return word_of_text(kDriveProtocols, value);
}
Json drive_form_factor(const Value& value) {
  return word_of_code(kFormFactors, value);
}
Json media_type(const Value& value) {
  return word_of_text(kMediaTypes, value);
}
Json link_status(const Value& value) {
  return word_of_code(kLinkStatuses, value);
}
Json link_technology(const Value& value) {
  return word_of_text(kTechnologies, value);
}
Json transceiver(const Value& value) {
  return word_of_text(kTransceivers, value);
}
Json slot_type(const Value& value) {
  return word_of_code(kSlotTypes, value);
}
Json slot_generation(const Value& value) {
  return word_of_code(kSlotGenerations, value);
}

Json slot_lanes(const Value& value) {
  const auto number = number_of(value);
  for (const auto& [code, lanes] : kSlotLanes) {
    if (number == code) return lanes;
  }
  return nullptr;
}

}  // namespace zymdb::service::redfish
