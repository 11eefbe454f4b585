// How places, identifiers and amounts are written for people.
#ifndef ZYMDB_RECORDS_TEXT_H
#define ZYMDB_RECORDS_TEXT_H

#include <cstdint>
#include <string>

#include "records/value.h"

namespace zymdb::records {

inline constexpr char kOnBoard[] = "on board";

// What a socket or position without its part is called.
inline constexpr char kEmpty[] = "empty";

// "slot 3", "bay 2", "on board".
std::string place_text(unsigned location, unsigned number);

// "15b3:a2d6".
std::string id_text(unsigned vendor, unsigned device);

// "up", "down", or what else a link's state is called.
std::string link_status_text(uint32_t status);

// "25 Gbit/s"; nothing for 0.
Value link_speed_text(uint64_t megabits);

// "64 GiB", and "129408 MiB" where it is no whole number of the larger unit.
std::string size_text(uint64_t mebibytes);

}  // namespace zymdb::records

#endif
