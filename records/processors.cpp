#include "records/cpu_mem.h"
#include "records/stored_rows.h"
#include "records/text.h"
#include "zymdb_cpu_mem.h"

namespace zymdb::records {
namespace {

using Processor = Stored<_ZYMDB_Processor>;

// Bit 6 of the status code tells a populated socket, its lowest three bits what became of the processor.
constexpr unsigned kPopulated = 0x40;

bool is_empty(const Processor& processor) {
  return processor.Status != 0 && (processor.Status & kPopulated) == 0;
}
bool is_there(const Processor& processor) {
  return !is_empty(processor);
}

Value state(const Processor& processor) {
  constexpr const char* kStates[] = {"unknown", "enabled", "disabled by user", "disabled by firmware",
                                     "idle",    "unknown", "unknown",          "other"};
  if (is_empty(processor)) return kEmpty;
  return (processor.Status & kPopulated) == 0 ? Value() : kStates[processor.Status & 7u];
}

Attention state_attention(const Value& state) {
  const auto* const text = std::get_if<std::string>(&state);
  if (text == nullptr || *text == kEmpty) return Attention::kAbsent;
  return text->starts_with("disabled") ? Attention::kWarning : Attention::kNone;
}

Attention socket_attention(const Processor& processor) {
  return state_attention(state(processor));
}

// Tenths of a volt; or, without bit 7, one bit for each voltage that the socket can give.
Value voltage(const Processor& processor) {
  if ((processor.Voltage & 0x80u) == 0) return {};
  const unsigned tenths = processor.Voltage & 0x7fu;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " V";
}

constexpr Field<Processor> kFields[] = {
    ZYMDB_RECORD_FIELD(Processor, _id, "ID", "row of the inventory").row(),
    ZYMDB_RECORD_FIELD(Processor, ProcId, "PROCID", "identification: CPUID signature and feature flags")
        .hex(16)
        .model(),
    ZYMDB_RECORD_FIELD(Processor, ProcType, "TYPE", "processor type code"),
    ZYMDB_RECORD_FIELD(Processor, Family, "FAMILY", "processor family code"),
    ZYMDB_RECORD_FIELD(Processor, Socket, "SOCKET", "socket designation")
        .place()
        .shown()
        .noted(socket_attention),
    derived<Processor>("State", "STATE", "what Status says", state).shown().judged(state_attention).state(),
    ZYMDB_RECORD_FIELD(Processor, Manufacturer, "MANUFACTURER", "manufacturer")
        .tells(Tells::kMaker)
        .long_text()
        .model(),
    ZYMDB_RECORD_FIELD(Processor, Version, "VERSION", "the processor's own name")
        .tells(Tells::kName)
        .long_text()
        .shown()
        .model(),
    ZYMDB_RECORD_FIELD(Processor, Voltage, "VOLTAGE", "voltage code").hex(2),
    derived<Processor>("VoltageText", "VOLTS", "what Voltage says", voltage),
    ZYMDB_RECORD_FIELD(Processor, ExtClock, "EXTMHZ", "external clock").unit("MHz").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Processor, MaxSpeed, "MAXMHZ", "maximum speed")
        .unit("MHz")
        .known_if(is_there)
        .zero_is_unknown()
        .shown(),
    ZYMDB_RECORD_FIELD(Processor, CurSpeed, "MHZ", "current speed")
        .unit("MHz")
        .known_if(is_there)
        .zero_is_unknown()
        .changing()
        .shown(),
    ZYMDB_RECORD_FIELD(Processor, Status, "STATUS", "status code").hex(2).state(),
    ZYMDB_RECORD_FIELD(Processor, Upgrade, "UPGRADE", "socket type code").hex(2),
    ZYMDB_RECORD_FIELD(Processor, SerialNo, "SERIAL", "serial number").identity(),
    ZYMDB_RECORD_FIELD(Processor, AssetTag, "ASSET", "asset tag"),
    ZYMDB_RECORD_FIELD(Processor, PartNo, "PART", "part number").model(),
    ZYMDB_RECORD_FIELD(Processor, CoreCount, "CORES", "cores")
        .amount()
        .known_if(is_there)
        .zero_is_unknown()
        .shown(),
    ZYMDB_RECORD_FIELD(Processor, CoreEnabled, "ENABLED", "enabled cores")
        .amount()
        .known_if(is_there)
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Processor, ThreadCount, "THREADS", "threads")
        .amount()
        .known_if(is_there)
        .zero_is_unknown()
        .shown(),
    ZYMDB_RECORD_FIELD(Processor, Characteristics, "CHARACTERISTICS", "characteristics bits").hex(4),
    ZYMDB_RECORD_FIELD(Processor, L1CacheMaxSize, "L1MAX", "level-1 cache: largest size").unit("KiB"),
    ZYMDB_RECORD_FIELD(Processor, L1CacheInstalled, "L1", "level-1 cache: installed size").unit("KiB"),
    ZYMDB_RECORD_FIELD(Processor, L1CacheType, "L1TYPE", "level-1 cache: type code"),
    ZYMDB_RECORD_FIELD(Processor, L1CacheConfig, "L1CONFIG", "level-1 cache: configuration bits").hex(4),
    ZYMDB_RECORD_FIELD(Processor, L2CacheMaxSize, "L2MAX", "level-2 cache: largest size").unit("KiB"),
    ZYMDB_RECORD_FIELD(Processor, L2CacheInstalled, "L2", "level-2 cache: installed size").unit("KiB"),
    ZYMDB_RECORD_FIELD(Processor, L2CacheType, "L2TYPE", "level-2 cache: type code"),
    ZYMDB_RECORD_FIELD(Processor, L2CacheConfig, "L2CONFIG", "level-2 cache: configuration bits").hex(4),
    ZYMDB_RECORD_FIELD(Processor, L3CacheMaxSize, "L3MAX", "level-3 cache: largest size").unit("KiB"),
    ZYMDB_RECORD_FIELD(Processor, L3CacheInstalled, "L3", "level-3 cache: installed size").unit("KiB"),
    ZYMDB_RECORD_FIELD(Processor, L3CacheType, "L3TYPE", "level-3 cache: type code"),
    ZYMDB_RECORD_FIELD(Processor, L3CacheConfig, "L3CONFIG", "level-3 cache: configuration bits").hex(4),
    ZYMDB_RECORD_FIELD(Processor, NodeIndex, "NODE", "node that the processor belongs to"),
};

std::vector<Processor> list_processors() {
  const Reading reading("processors");
  const auto rows = read_stored_rows(reading, "Processor", "_id", number_columns(kFields));
  return read_by_id<Processor>(reading, zymdb_get_processor_list, [&](Processor& processor, uint32_t id) {
    processor._id = id;
    if (const auto row = rows.find(id); row != rows.end()) processor.row = row->second;
    return zymdb_get_processor(&processor);
  });
}

}  // namespace

RecordType processors() {
  return describe<Processor>("processors", "Processors and their sockets", kFields, list_processors);
}

}  // namespace zymdb::records
