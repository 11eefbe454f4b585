// The tables that say which field fills which property.
#include "service/redfish/model/mapping.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "documents/inventory_types.h"
#include "records/pci.h"
#include "service/redfish/model/conversions.h"

namespace zymdb::service::redfish {
namespace {

std::string content_of(const char* path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return content.str();
}

TEST(RedfishMapping, NamesFieldsThatTheInventoryHas) {
  const auto types = documents::inventory_types(records::kPciIdsFile);
  for (const MappingTable& table : mapping_tables()) {
    const auto type = std::ranges::find(types, table.part_class, &documents::RecordType::name);
    ASSERT_NE(type, types.end()) << table.part_class;
    for (const Mapping& mapping : table.mappings)
      EXPECT_NE(std::ranges::find(type->fields, mapping.key,
                                  [](const auto& field) { return std::string_view(field.key); }),
                type->fields.end())
          << table.part_class << "." << mapping.key;
  }
}

TEST(RedfishMapping, IsWhatTheDocumentationSays) {
  const std::string documentation = content_of(ZYMDB_DOCUMENTATION);
  size_t lines = 0;
  for (const MappingTable& table : mapping_tables()) {
    for (const Mapping& mapping : table.mappings) {
      const std::string line = "| `" + std::string(table.resource) + "` | `" + std::string(mapping.property) +
                               "` | `" + std::string(table.part_class) + "` | `" + std::string(mapping.key) +
                               "` |";
      EXPECT_THAT(documentation, testing::HasSubstr(line));
      ++lines;
    }
  }
  // And it says no more.
  size_t said = 0;
  for (size_t at = documentation.find("\n| `"); at != std::string::npos;
       at = documentation.find("\n| `", at + 1)) {
    const size_t end = documentation.find('\n', at + 1);
    const std::string line = documentation.substr(at, end - at);
    said += std::ranges::count(line, '|') == 5 ? 1 : 0;
  }
  EXPECT_EQ(said, lines);
}

struct Conversion {
  Convert convert;
  Value value;
  Json expected;
};

TEST(RedfishConversions, SayNothingOfWhatTheSchemaHasNoWordFor) {
  const Value nothing;
  const Conversion cases[] = {
      {as_text, std::string("\xff"), "\uFFFD"},
      {as_text, std::string(), nullptr},
      {as_number, uint64_t{7}, 7},
      {as_number, int64_t{-7}, nullptr},
      {as_number, ~uint64_t{0}, nullptr},
      {as_positive, uint64_t{0}, nullptr},
      {as_percent, uint64_t{101}, nullptr},
      {as_flag, uint64_t{1}, true},
      {as_flag, uint64_t{2}, nullptr},
      {as_hex4, uint64_t{0x15b3}, "0x15B3"},
      {as_hex4, uint64_t{0x12345}, nullptr},
      {as_uuid, std::string("00112233-4455-6677-8899-aabbccddeeff"), "00112233-4455-6677-8899-aabbccddeeff"},
      {as_uuid, std::string("00112233"), nullptr},
      {as_mac_address, std::string("b4-96-91-00-10-00"), "B4:96:91:00:10:00"},
      {as_mac_address, std::string("b4:96:91:00:10"), nullptr},
      {as_mac_address, std::string("b4:96:91:00:10:0g"), nullptr},
      {as_mac_address, std::string("B4:96:91:00:10:00:00:00"), nullptr},
      {as_world_wide_name, std::string("21:00:00:24:FF:00:50:00"), "21:00:00:24:FF:00:50:00"},
      {as_port_guid, std::string("0C:42:A1:03:00:00:40:01"), "0C42:A103:0000:4001"},
      {gbit_of_mbit, uint64_t{100000}, 100},
      {gbit_of_mbit, uint64_t{2500}, 2.5},
      {mebibytes_of_bytes, uint64_t{3} << 20, 3},
      {bytes_of_capacity, std::string("1.92TB"), 1920000000000},
      {bytes_of_capacity, std::string("480 GB"), 480000000000},
      {bytes_of_capacity, std::string("4.00"), nullptr},
      {bytes_of_capacity, std::string("-1TB"), nullptr},
      {bytes_of_capacity, std::string("1e999TB"), nullptr},
      {time_of_date, std::string("03/14/2024"), "2024-03-14T00:00:00Z"},
      {time_of_date, std::string("2024-03-14"), "2024-03-14T00:00:00Z"},
      {time_of_date, std::string("14/03/2024"), nullptr},
      {pcie_generation, uint64_t{4}, "Gen4"},
      {pcie_generation, uint64_t{7}, nullptr},
      {device_class, uint64_t{0x020000}, "NetworkController"},
      {device_class, uint64_t{0x770000}, nullptr},
      {processor_type, uint64_t{3}, "CPU"},
      {processor_architecture, uint64_t{179}, "x86"},
      {processor_architecture, uint64_t{257}, "ARM"},
      {processor_architecture, uint64_t{2}, nullptr},
      {memory_device_type, uint64_t{26}, "DDR4"},
      {memory_device_type, uint64_t{1}, nullptr},
      {memory_rank, uint64_t{0x12}, 2},
      {drive_protocol, std::string("M.2 NVMe"), "NVMe"},
      {drive_protocol, std::string("Unknown"), nullptr},
      {drive_form_factor, uint64_t{0x10}, nullptr},
      {link_status, uint64_t{2}, "LinkDown"},
      {link_technology, std::string("IB"), "InfiniBand"},
      {slot_type, uint64_t{38}, "OCP3Small"},
      {slot_generation, uint64_t{189}, "Gen4"},
      {slot_lanes, uint64_t{13}, 16},
      {number_of_digits, std::string("81920"), 81920},
      {number_of_digits, std::string("80 GB"), nullptr},
  };
  for (const Conversion& each : cases) {
    EXPECT_EQ(each.convert(each.value), each.expected) << records::text_of({}, each.value);
    EXPECT_EQ(each.convert(nothing), nullptr);
  }
}

}  // namespace
}  // namespace zymdb::service::redfish
