#include "collect/model/slots.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <utility>

#include "common/text.h"

namespace zymdb::collect {
namespace {

// SFF-8639 of generations 2 to 5, EDSFF E1 and E3.
constexpr uint8_t kBayTypes[] = {0x1F, 0x20, 0x24, 0x25, 0xC5, 0xC6};

// Any of these at the start of a word makes a bay, unless the slot is an M.2 socket. Lower case.
constexpr std::string_view kBayWords[] = {"bay",  "drive", "nvme", "u.2",   "u.3",      "e1.s",
                                          "e1.l", "e3.s",  "e3.l", "edsff", "sff-8639", "backplane"};
constexpr std::string_view kSocketWords[] = {"m.2", "m2", "m_2"};

// What takes a card that takes drives, whatever its type says.
constexpr std::string_view kRisers[] = {"edsff riser", "edsff_riser", "edsff-riser"};

constexpr std::string_view kHardDiskWords[] = {"hdd"};
constexpr uint8_t kFourLanes = 0x0A;

constexpr std::string_view kNumberWords[] = {"slot", "bay"};

constexpr size_t kMostDigits = 5;
constexpr unsigned kLargestNumber = 0xFFFF;

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_letter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

// Where `word` stands in `text` at the start of a word of its own; npos if nowhere.
size_t find_word(std::string_view text, std::string_view word) {
  for (size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
    if (at == 0 || (!is_letter(text[at - 1]) && !is_digit(text[at - 1]))) return at;
  }
  return std::string_view::npos;
}

template <size_t N>
bool has_word(std::string_view text, const std::string_view (&words)[N]) {
  return std::ranges::any_of(words,
                             [text](auto word) { return find_word(text, word) != std::string_view::npos; });
}

std::optional<uint16_t> parse_number(std::string_view digits) {
  const auto number = digits.size() <= kMostDigits ? leading_number(digits) : std::nullopt;
  return number && *number <= kLargestNumber ? std::optional(static_cast<uint16_t>(*number)) : std::nullopt;
}

std::string_view digits_at(std::string_view text, size_t at) {
  const auto end = std::find_if_not(text.begin() + static_cast<ptrdiff_t>(at), text.end(), is_digit);
  return text.substr(at, static_cast<size_t>(end - text.begin()) - at);
}

// The digits that follow a word, blanks and "_", "-", "#", ":" between them aside.
std::string_view digits_after(std::string_view text, std::string_view word) {
  const size_t at = text.find(word);
  if (at == std::string_view::npos) return {};
  const size_t number = text.find_first_not_of(" _-#:", at + word.size());
  return number == std::string_view::npos ? std::string_view() : digits_at(text, number);
}

// "x16": a count of lanes.
bool is_width(std::string_view text, size_t digits) {
  if (digits == 0 || text[digits - 1] != 'x') return false;
  return digits == 1 || !is_letter(text[digits - 2]);
}

// The digits of the only number, widths aside; none when there are several.
std::string_view only_digits(std::string_view text) {
  std::string_view only;
  size_t at = 0;
  while ((at = text.find_first_of("0123456789", at)) != std::string_view::npos) {
    const std::string_view digits = digits_at(text, at);
    if (!is_width(text, at)) {
      if (!only.empty()) return {};
      only = digits;
    }
    at += digits.size();
  }
  return only;
}

std::optional<uint8_t> known_code(std::optional<uint8_t> code) {
  constexpr uint8_t kUnknown = 2;
  return code == kUnknown || code == uint8_t{0} ? std::nullopt : code;
}

void add_wish(Slot& slot, std::optional<uint16_t> number) {
  if (number) slot.wishes.push_back(*number);
}

void drop_shared_addresses(std::vector<Slot>& slots) {
  std::map<PciAddress, unsigned> uses;
  for (const auto& slot : slots) {
    for (const auto& stated : slot.addresses) ++uses[stated.address];
  }
  for (auto& slot : slots) {
    std::erase_if(slot.addresses, [&uses](const SlotAddress& stated) { return uses[stated.address] > 1; });
  }
}

}  // namespace

bool is_drive_bay(std::optional<uint8_t> type, std::string_view designation,
                  std::optional<uint8_t> data_bus_width) {
  const std::string text = lower_case(designation);
  if (has_word(text, kRisers)) return false;
  if (type && std::ranges::find(kBayTypes, *type) != std::end(kBayTypes)) return true;
  if (data_bus_width == kFourLanes && has_word(text, kHardDiskWords)) return true;
  return has_word(text, kBayWords) && !has_word(text, kSocketWords);
}

std::optional<uint16_t> designated_number(std::string_view designation) {
  const std::string text = lower_case(designation);
  for (const auto word : kNumberWords) {
    if (const auto digits = digits_after(text, word); !digits.empty()) return parse_number(digits);
  }
  const auto digits = only_digits(text);
  return digits.empty() ? std::nullopt : parse_number(digits);
}

std::vector<Slot> slots_of(const std::vector<SmbiosSlot>& described) {
  std::vector<Slot> slots;
  for (const auto& from : described) {
    Slot& slot = slots.emplace_back();
    slot.designation = from.designation;
    slot.type = known_code(from.type);
    slot.data_bus_width = known_code(from.data_bus_width);
    const std::string designation = from.designation.value_or("");
    if (is_drive_bay(from.type, designation, from.data_bus_width)) slot.location = ZYMDB_LOCATION_BAY;
    if (from.id != 0) add_wish(slot, from.id);
    add_wish(slot, designated_number(designation));
    if (from.address) slot.addresses.push_back({*from.address, true});
    slot.is_said_to_be_empty = from.is_said_to_be_empty();
  }
  drop_shared_addresses(slots);
  return slots;
}

std::vector<Slot> slots_of(const std::vector<SysfsSlot>& named) {
  std::vector<Slot> slots;
  for (const auto& from : named) {
    Slot& slot = slots.emplace_back();
    slot.designation = known_text(from.name);
    add_wish(slot, designated_number(from.name));
    slot.addresses.push_back({from.address, false});
  }
  drop_shared_addresses(slots);
  return slots;
}

void join_slots(std::vector<Slot>& slots, std::vector<Slot> named) {
  const auto described = static_cast<ptrdiff_t>(slots.size());
  for (auto& slot : named) {
    const auto is_same = [&slot](const Slot& other) {
      return !slot.wishes.empty() && !other.wishes.empty() && slot.wishes.front() == other.wishes.front();
    };
    const auto last = slots.begin() + described;
    const auto same = std::find_if(slots.begin(), last, is_same);
    if (same == last || std::find_if(same + 1, last, is_same) != last) {
      slots.push_back(std::move(slot));
    } else {
      same->addresses.insert(same->addresses.end(), slot.addresses.begin(), slot.addresses.end());
    }
  }
}

void number_slots(const std::vector<Slot*>& slots, const std::function<bool(uint32_t)>& is_free) {
  std::map<Location, std::set<uint16_t>> taken;
  const auto try_number = [&](Slot& slot, uint16_t number) {
    if (!is_free(slot_key(slot.location, number)) || !taken[slot.location].insert(number).second) return;
    slot.number = number;
  };
  for (const size_t rank : {0U, 1U}) {
    for (Slot* slot : slots) {
      if (!slot->number && rank < slot->wishes.size()) try_number(*slot, slot->wishes[rank]);
    }
  }
  std::map<Location, unsigned> next;  // one below the smallest number not tried yet
  for (Slot* slot : slots) {
    unsigned& number = next[slot->location];
    while (!slot->number && number < kLargestNumber) try_number(*slot, static_cast<uint16_t>(++number));
  }
}

}  // namespace zymdb::collect
