// How PCI devices are written for people.
#ifndef ZYMDB_TOOL_SHOW_PCI_TEXT_H
#define ZYMDB_TOOL_SHOW_PCI_TEXT_H

#include <cstdint>
#include <string>

namespace zymdb::tool {

// "slot 3", "bay 2", "on board".
std::string place_text(unsigned location, unsigned slot);

// "0000:3b:00.0" of a function key.
std::string address_text(uint32_t function_key);

// "15b3:a2d6".
std::string id_text(unsigned vendor, unsigned device);

}  // namespace zymdb::tool

#endif
