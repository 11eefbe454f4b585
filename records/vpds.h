// Vital product data: what makers stored on their cards.
#ifndef ZYMDB_RECORDS_VPDS_H
#define ZYMDB_RECORDS_VPDS_H

#include <cstdint>
#include <map>
#include <string>

#include "records/reading.h"
#include "records/record.h"

namespace zymdb::records {

// A row, with its texts in full: the library's record cuts serial and part numbers after 16 bytes.
struct Vpd {
  uint32_t HardwareId = 0;
  uint32_t HardwareTypeId = 0;
  std::string UUID;
  std::string ProductName;
  std::string Manufacture;
  std::string SerialNo;
  std::string PartNo;
  std::string Model;
  std::string FRUNo;
};

// Those of PCI functions, by hardware id.
std::map<uint32_t, Vpd> read_function_vpds(const Reading& reading);

RecordType vital_product_data();

}  // namespace zymdb::records

#endif
