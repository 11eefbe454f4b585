#include "records/text.h"

#include <cstdio>

#include "zymdb_network.h"

namespace zymdb::records {

std::string place_text(unsigned location, unsigned number) {
  switch (location) {
    case ZYMDB_LOCATION_BOARD:
      return kOnBoard;
    case ZYMDB_LOCATION_SLOT:
      return "slot " + std::to_string(number);
    case ZYMDB_LOCATION_BAY:
      return "bay " + std::to_string(number);
    default:
      return "location " + std::to_string(location) + " number " + std::to_string(number);
  }
}

std::string id_text(unsigned vendor, unsigned device) {
  char text[16];
  std::snprintf(text, sizeof text, "%04x:%04x", vendor & 0xffff, device & 0xffff);
  return text;
}

std::string link_status_text(uint32_t status) {
  switch (status) {
    case ZYMDB_LINK_UNKNOWN:
      return "unknown";
    case ZYMDB_LINK_UP:
      return "up";
    case ZYMDB_LINK_DOWN:
      return "down";
    default:
      return "state " + std::to_string(status);
  }
}

Value link_speed_text(uint64_t megabits) {
  constexpr uint64_t kGigabit = 1000;
  if (megabits == 0) return {};
  if (megabits < kGigabit) return std::to_string(megabits) + " Mbit/s";
  std::string text = std::to_string(megabits / kGigabit);
  if (const auto rest = megabits % kGigabit; rest != 0) {
    text += "." + std::to_string(kGigabit + rest).substr(1);
    text.erase(text.find_last_not_of('0') + 1);
  }
  return text + " Gbit/s";
}

std::string size_text(uint64_t mebibytes) {
  constexpr uint64_t kGibibyte = 1024;
  if (mebibytes != 0 && mebibytes % kGibibyte == 0) return std::to_string(mebibytes / kGibibyte) + " GiB";
  return std::to_string(mebibytes) + " MiB";
}

}  // namespace zymdb::records
