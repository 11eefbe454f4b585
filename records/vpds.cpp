#include "records/vpds.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "common/pci_address.h"
#include "records/rows.h"
#include "records/stored_rows.h"
#include "zymdb_db.h"

namespace zymdb::records {
namespace {

// Which column fills which text.
struct Column {
  const char* name;
  std::string Vpd::*text;
};
constexpr Column kTexts[] = {
    {"UUID", &Vpd::UUID},         {"ProductName", &Vpd::ProductName}, {"Manufacture", &Vpd::Manufacture},
    {"SerialNo", &Vpd::SerialNo}, {"PartNo", &Vpd::PartNo},           {"Model", &Vpd::Model},
    {"FRUNo", &Vpd::FRUNo},
};

struct PlacedVpd : Vpd {
  std::optional<FunctionKey> function;
};

Value address(const PlacedVpd& vpd) {
  return vpd.function ? Value(vpd.function->text()) : Value();
}

constexpr Field<PlacedVpd> kFields[] = {
    derived<PlacedVpd>("Function", "FUNCTION", "address of the PCI function", address).shown().place(),
    ZYMDB_RECORD_FIELD(PlacedVpd, HardwareId, "HARDWARE", "hardware id: a function's key").hex(8).place(),
    ZYMDB_RECORD_FIELD(PlacedVpd, HardwareTypeId, "HARDWARETYPE", "hardware type: 3 a PCI function"),
    ZYMDB_RECORD_FIELD(PlacedVpd, UUID, "UUID", "universally unique identifier").identity(),
    ZYMDB_RECORD_FIELD(PlacedVpd, ProductName, "PRODUCT", "product name").long_text().shown(),
    ZYMDB_RECORD_FIELD(PlacedVpd, Manufacture, "MAKER", "maker").shown(),
    ZYMDB_RECORD_FIELD(PlacedVpd, SerialNo, "SERIAL", "serial number").identity().shown(),
    ZYMDB_RECORD_FIELD(PlacedVpd, PartNo, "PART", "part number").shown(),
    ZYMDB_RECORD_FIELD(PlacedVpd, Model, "MODEL", "model"),
    ZYMDB_RECORD_FIELD(PlacedVpd, FRUNo, "FRU", "number of the field-replaceable unit").shown(),
};

Vpd read_vpd(Rows& rows) {
  Vpd vpd;
  vpd.HardwareId = rows.number("HardwareId");
  vpd.HardwareTypeId = rows.number("HardwareTypeId");
  for (const auto& [name, text] : kTexts) vpd.*text = rows.text(name);
  return vpd;
}

std::vector<Vpd> read_vpds(const Reading& reading) {
  Rows rows(reading, get_dmdb_handle(), "VPDs");
  std::vector<Vpd> vpds;
  while (rows.step()) vpds.push_back(read_vpd(rows));
  reading.require_whole();
  return vpds;
}

std::vector<PlacedVpd> list_vpds() {
  const Reading reading("vital product data");
  const auto functions = read_stored_rows(reading, "PCIs", "HardwareId", {"FunKey"});
  std::vector<PlacedVpd> vpds;
  for (auto& vpd : read_vpds(reading)) {
    const auto function = functions.find(vpd.HardwareId);
    auto& placed = vpds.emplace_back(PlacedVpd{std::move(vpd), {}});
    if (placed.HardwareTypeId != ZYMDB_HARDWARE_PCI || function == functions.end()) continue;
    const auto* const key = std::get_if<uint64_t>(&function->second.at("FunKey"));
    if (key != nullptr) placed.function = FunctionKey(static_cast<uint32_t>(*key));
  }
  std::ranges::stable_sort(
      vpds, {}, [](const PlacedVpd& vpd) { return std::tuple(vpd.HardwareTypeId, vpd.HardwareId); });
  return vpds;
}

}  // namespace

std::map<uint32_t, Vpd> read_function_vpds(const Reading& reading) {
  std::map<uint32_t, Vpd> vpds;
  for (auto& vpd : read_vpds(reading)) {
    if (vpd.HardwareTypeId == ZYMDB_HARDWARE_PCI) vpds.emplace(vpd.HardwareId, std::move(vpd));
  }
  return vpds;
}

RecordType vital_product_data() {
  return describe<PlacedVpd>("vpd", "Vital product data of cards: serial and part numbers", kFields,
                             list_vpds);
}

}  // namespace zymdb::records
