#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <span>

#include "commands/commands.h"
#include "common/text.h"
#include "show/pci_text.h"
#include "zymdb_pci.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show cards\n"
    "  zymdb show cards --match 10de:20b5 --columns NAME,WATTS\n"
    "  zymdb show cards --match 10de:20b5:10de:1533 --no-headings";

using Record = _ZYMDB_HC_Card;

Value id(const Record& card) {
  return id_text(card.VendorId, card.DeviceId);
}

bool knows_subsystem(const Record& card) {
  return card.SubVendorId != 0;
}

Value subsystem_id(const Record& card) {
  return knows_subsystem(card) ? id_text(card.SubVendorId, card.SubDeviceId) : std::string();
}

constexpr Column<Record> kColumns[] = {
    derived<Record>("ID", "vendor and device", Shown::kByDefault, id),
    derived<Record>("SUBID", "vendor and device of the subsystem; empty when not known", Shown::kByDefault,
                    subsystem_id),
    field<Record, &Record::VendorId, 4>("VendorId", "VENDOR", "vendor"),
    field<Record, &Record::DeviceId, 4>("DeviceId", "DEVICE", "device"),
    field<Record, &Record::SubVendorId, 4>("SubVendorId", "SUBVENDOR", "vendor of the subsystem"),
    field<Record, &Record::SubDeviceId, 4>("SubDeviceId", "SUBDEVICE", "device of the subsystem"),
    long_text(field<Record, &Record::CardName>("CardName", "NAME", "name", Shown::kByDefault)),
    field<Record, &Record::Info>("Info", "INFO", "a note"),
    field<Record, &Record::Manufacture>("Manufacture", "MANUFACTURER", "manufacturer", Shown::kByDefault),
    field<Record, &Record::BoardPower>("BoardPower", "WATTS", "board power, W; 0 when not known",
                                       Shown::kByDefault),
};

// The ids of a device, and of its subsystem when `count` is 4.
struct CardIds {
  std::array<uint16_t, 4> ids{};
  size_t count = 0;
};

CardIds parse_ids(const std::string& text) {
  CardIds parsed;
  for (const auto& part : CLI::detail::split(text, ':')) {
    const auto number = part.size() <= 4 ? hex_number(part) : std::nullopt;
    if (!number || parsed.count == parsed.ids.size()) return {};
    parsed.ids[parsed.count++] = static_cast<uint16_t>(*number);
  }
  return parsed;
}

std::string complaint(const std::string& text) {
  const size_t count = parse_ids(text).count;
  if (count == 2 || count == 4) return {};
  return "'" + text + "' is not VENDOR:DEVICE or VENDOR:DEVICE:SUBVENDOR:SUBDEVICE, hexadecimal";
}

// A card whose subsystem is not known may be of any.
bool matches(const Record& card, const CardIds& wanted) {
  const auto& [vendor, device, subvendor, subdevice] = wanted.ids;
  if (card.VendorId != vendor || card.DeviceId != device) return false;
  return wanted.count == 2 || !knows_subsystem(card) ||
         (card.SubVendorId == subvendor && card.SubDeviceId == subdevice);
}

std::vector<Record> read_cards(const std::string& wanted) {
  const std::span all(hc_card_table, static_cast<size_t>(zymdb_get_hc_card_count()));
  const CardIds ids = parse_ids(wanted);
  std::vector<Record> cards;
  std::ranges::copy_if(all, std::back_inserter(cards),
                       [&](const Record& card) { return wanted.empty() || matches(card, ids); });
  return cards;
}

}  // namespace

void add_show_cards(CommandTree& tree, CLI::App& show) {
  const auto wanted = std::make_shared<std::string>();
  auto listing = make_listing<Record>("cards", "Accelerator cards that the library knows", kColumns,
                                      [wanted] { return read_cards(*wanted); });
  listing.is_stored = false;
  auto& command = add_listing(tree, show, std::move(listing), kExamples);
  command.add_option("--match", *wanted, "Only cards with these PCI ids; with four, unknown subsystems too")
      ->type_name("VENDOR:DEVICE[:SUBVENDOR:SUBDEVICE]")
      ->check(CLI::Validator(complaint, ""));
}

}  // namespace zymdb::tool
