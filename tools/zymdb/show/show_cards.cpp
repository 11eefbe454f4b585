#include <algorithm>
#include <array>
#include <iterator>
#include <memory>

#include "common/text.h"
#include "records/pci.h"
#include "show/listing.h"
#include "show/listings.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show cards\n"
    "  zymdb show cards --match 10de:20b5 --columns NAME,WATTS\n"
    "  zymdb show cards --match 10de:20b5:10de:1533 --no-headings";

using Card = _ZYMDB_HC_Card;

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
bool matches(const Card& card, const CardIds& wanted) {
  const auto& [vendor, device, subvendor, subdevice] = wanted.ids;
  if (card.VendorId != vendor || card.DeviceId != device) return false;
  return wanted.count == 2 || card.SubVendorId == 0 ||
         (card.SubVendorId == subvendor && card.SubDeviceId == subdevice);
}

records::Cards list_cards(const std::string& wanted) {
  auto cards = records::list_cards();
  const CardIds ids = parse_ids(wanted);
  if (!wanted.empty()) std::erase_if(cards, [&](const Card& card) { return !matches(card, ids); });
  return cards;
}

}  // namespace

void add_show_cards(CommandTree& tree, CLI::App& show) {
  const auto wanted = std::make_shared<std::string>();
  Listing listing{records::cards([wanted] { return list_cards(*wanted); }), kExamples};
  listing.is_stored = false;
  auto& command = add_listing(tree, show, std::move(listing));
  command.add_option("--match", *wanted, "Only cards with these PCI ids; with four, unknown subsystems too")
      ->type_name("VENDOR:DEVICE[:SUBVENDOR:SUBDEVICE]")
      ->check(CLI::Validator(complaint, ""));
}

}  // namespace zymdb::tool
