// Values of the inventory as values of properties. Null: the property is left out, since the value is unknown
// or nothing that the schema has a word for.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_CONVERSIONS_H
#define ZYMDB_SERVICE_REDFISH_MODEL_CONVERSIONS_H

#include "records/value.h"
#include "service/redfish/model/json.h"

namespace zymdb::service::redfish {

using records::Value;
using Convert = Json (*)(const Value&);

Json as_text(const Value& value);
Json as_number(const Value& value);
Json as_positive(const Value& value);       // 0 says nothing
Json as_percent(const Value& value);        // 0 to 100
Json number_of_digits(const Value& value);  // a number that is stored as a text
Json as_flag(const Value& value);           // of 0 or 1
Json as_count_of_one(const Value& value);   // an array of the number

Json as_hex1(const Value& value);  // "0x7"
Json as_hex2(const Value& value);  // "0x1F"
Json as_hex4(const Value& value);
Json as_hex6(const Value& value);

Json as_uuid(const Value& value);
Json as_mac_address(const Value& value);      // "B4:96:91:00:10:00"
Json as_world_wide_name(const Value& value);  // eight such bytes

Json as_port_guid(const Value& value);  // the same as "0C42:A103:0000:4001"

Json gbit_of_mbit(const Value& value);  // a link's speed in Gbit/s
Json mebibytes_of_bytes(const Value& value);
Json bytes_of_capacity(const Value& value);  // of "1.92TB"
Json time_of_date(const Value& value);       // of "03/14/2024" or "2024-03-14"

Json pcie_generation(const Value& value);  // "Gen4"
Json device_class(const Value& value);     // of a PCI class code
Json processor_type(const Value& value);   // of SMBIOS's codes
Json processor_architecture(const Value& value);
Json memory_device_type(const Value& value);
Json memory_rank(const Value& value);
Json security_state(const Value& value);
Json drive_protocol(const Value& value);
Json drive_form_factor(const Value& value);
Json media_type(const Value& value);
Json link_status(const Value& value);
Json link_technology(const Value& value);
Json transceiver(const Value& value);

// What a slot's SMBIOS codes tell.
Json slot_type(const Value& value);
Json slot_generation(const Value& value);
Json slot_lanes(const Value& value);

}  // namespace zymdb::service::redfish

#endif
