#include "show/pci_text.h"

#include <cstdio>

namespace zymdb::tool {

std::string place_text(unsigned location, unsigned slot) {
  switch (location) {
    case 0:
      return "on board";
    case 1:
      return "slot " + std::to_string(slot);
    case 2:
      return "bay " + std::to_string(slot);
    default:
      return "location " + std::to_string(location) + " number " + std::to_string(slot);
  }
}

std::string address_text(uint32_t function_key) {
  char text[16];
  std::snprintf(text, sizeof text, "%04x:%02x:%02x.%x", function_key >> 24, function_key >> 16 & 0xff,
                function_key >> 8 & 0xff, function_key & 0xff);
  return text;
}

std::string id_text(unsigned vendor, unsigned device) {
  char text[16];
  std::snprintf(text, sizeof text, "%04x:%04x", vendor & 0xffff, device & 0xffff);
  return text;
}

}  // namespace zymdb::tool
