#include "db/query.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_VPD;

constexpr Column kVpdColumns[] = {
    ZYMDB_FIELD(Record, UUID),     ZYMDB_FIELD(Record, ProductName), ZYMDB_FIELD(Record, Manufacture),
    ZYMDB_FIELD(Record, SerialNo), ZYMDB_FIELD(Record, PartNo),      ZYMDB_FIELD(Record, Model),
    ZYMDB_FIELD(Record, FRUNo),
};

}  // namespace

int zymdb_get_pci_vpd_info(unsigned int funkey, _ZYMDB_PCI_VPD* vpd) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (vpd == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  unsigned int hardware_id = 0;
  unsigned char hardware_type = ZYMDB_HARDWARE_PCI;
  // The lookup's own code is not told: an unknown function is a wrong argument here.
  if (zymdb_get_pci_hardwareidtype_by_funkey(funkey, &hardware_id, &hardware_type) != ZYM_DB_STATUS_OK)
    return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(
      handle, "VPDs", kVpdColumns,
      Filter<128>("HardwareId=%d AND HardwareTypeId=%d", static_cast<int>(hardware_id), hardware_type));
  if (query.step() == ZYM_DB_STATUS_ROW) query.read_columns(kVpdColumns, vpd);
  return query.status();
}
