#include <utility>

#include "records/pci.h"
#include "records/text.h"

namespace zymdb::records {
namespace {

using Card = _ZYMDB_HC_Card;

bool has_subsystem(const Card& card) {
  return card.SubVendorId != 0;
}

Value id(const Card& card) {
  return id_text(card.VendorId, card.DeviceId);
}

Value subsystem_id(const Card& card) {
  return id_text(card.SubVendorId, card.SubDeviceId);
}

constexpr Field<Card> kFields[] = {
    derived<Card>("Id", "ID", "vendor and device", id).shown(),
    derived<Card>("SubsystemId", "SUBID", "vendor and device of the subsystem", subsystem_id)
        .shown()
        .known_if(has_subsystem),
    ZYMDB_RECORD_FIELD(Card, VendorId, "VENDOR", "vendor").hex(4),
    ZYMDB_RECORD_FIELD(Card, DeviceId, "DEVICE", "device").hex(4),
    ZYMDB_RECORD_FIELD(Card, SubVendorId, "SUBVENDOR", "vendor of the subsystem")
        .hex(4)
        .known_if(has_subsystem),
    ZYMDB_RECORD_FIELD(Card, SubDeviceId, "SUBDEVICE", "device of the subsystem")
        .hex(4)
        .known_if(has_subsystem),
    ZYMDB_RECORD_FIELD(Card, CardName, "NAME", "name").long_text().shown(),
    ZYMDB_RECORD_FIELD(Card, Info, "INFO", "a note"),
    ZYMDB_RECORD_FIELD(Card, Manufacture, "MANUFACTURER", "manufacturer").shown(),
    ZYMDB_RECORD_FIELD(Card, BoardPower, "WATTS", "board power").unit("W").shown().zero_is_unknown(),
};

}  // namespace

Cards list_cards() {
  return {hc_card_table, hc_card_table + zymdb_get_hc_card_count()};
}

RecordType cards(std::function<Cards()> list) {
  return describe<Card>("cards", "Accelerator cards that the library knows", kFields, std::move(list));
}

}  // namespace zymdb::records
