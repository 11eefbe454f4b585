// Which field of a class fills which property of a resource, said once: resources and their documentation
// come from these tables.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_MAPPING_H
#define ZYMDB_SERVICE_REDFISH_MODEL_MAPPING_H

#include <span>
#include <string_view>

#include "service/redfish/model/conversions.h"
#include "service/redfish/model/row.h"

namespace zymdb::service::redfish {

struct Mapping {
  std::string_view key;       // of the field
  std::string_view property;  // "Location/PartLocation/ServiceLabel"
  Convert convert = as_text;
};

// The fields of one class that fill properties of one type of resource.
struct MappingTable {
  std::string_view resource;
  std::string_view part_class;
  std::span<const Mapping> mappings;
};

std::span<const MappingTable> mapping_tables();

// Those of a resource and a class; a table that is not there has nothing in it.
std::span<const Mapping> mappings_of(std::string_view resource, std::string_view part_class);

// Writes what is known of the row into the resource.
void fill(Json& resource, const Row& row, std::span<const Mapping> mappings);

// A property within others: "A/B" is the member B of the object A.
void set(Json& resource, std::string_view property, Json value);

}  // namespace zymdb::service::redfish

#endif
