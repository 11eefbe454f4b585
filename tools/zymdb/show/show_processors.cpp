#include "commands/commands.h"
#include "show/records_by_id.h"
#include "zymdb_cpu_mem.h"

namespace zymdb::tool {
namespace {

using Record = _ZYMDB_Processor;

constexpr char kExamples[] =
    "  zymdb show processors\n"
    "  zymdb show processors --columns SOCKET,VERSION,CORES,THREADS --no-headings\n"
    "  zymdb show processors --json";

// Bit 6 of the status code tells a populated socket, its lowest three bits what became of the processor.
constexpr unsigned kPopulated = 0x40;

Value state(const Record& processor) {
  constexpr const char* kStates[] = {"unknown", "enabled", "disabled by user", "disabled by firmware",
                                     "idle",    "unknown", "unknown",          "other"};
  if ((processor.Status & kPopulated) == 0) return std::string(processor.Status == 0 ? "" : "empty");
  return std::string(kStates[processor.Status & 7u]);
}

Tone state_tone(const Record& processor) {
  if ((processor.Status & kPopulated) == 0) return Tone::kFaint;
  const unsigned state = processor.Status & 7u;
  return state == 2 || state == 3 ? Tone::kWarning : Tone::kPlain;
}

// Tenths of a volt; or, without bit 7, one bit for each voltage that the socket can give.
Value voltage(const Record& processor) {
  if ((processor.Voltage & 0x80u) == 0) return std::string();
  const unsigned tenths = processor.Voltage & 0x7fu;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " V";
}

constexpr Column<Record> kColumns[] = {
    field<Record, &Record::_id>("_id", "ID", "row of the inventory"),
    field<Record, &Record::ProcId, 16>("ProcId", "PROCID",
                                       "identification: CPUID signature and feature flags"),
    field<Record, &Record::ProcType>("ProcType", "TYPE", "processor type code"),
    field<Record, &Record::Family>("Family", "FAMILY", "processor family code"),
    field<Record, &Record::Socket>("Socket", "SOCKET", "socket designation", Shown::kByDefault, state_tone),
    derived<Record>("STATE", "what Status says", Shown::kByDefault, state, state_tone),
    long_text(field<Record, &Record::Manufacturer>("Manufacturer", "MANUFACTURER", "manufacturer")),
    long_text(
        field<Record, &Record::Version>("Version", "VERSION", "the processor's own name", Shown::kByDefault)),
    field<Record, &Record::Voltage, 2>("Voltage", "VOLTAGE", "voltage code"),
    derived<Record>("VOLTS", "what Voltage says", Shown::kNo, voltage),
    field<Record, &Record::ExtClock>("ExtClock", "EXTMHZ", "external clock, MHz"),
    field<Record, &Record::MaxSpeed>("MaxSpeed", "MAXMHZ", "maximum speed, MHz", Shown::kByDefault),
    field<Record, &Record::CurSpeed>("CurSpeed", "MHZ", "current speed, MHz", Shown::kByDefault),
    field<Record, &Record::Status, 2>("Status", "STATUS", "status code"),
    field<Record, &Record::Upgrade, 2>("Upgrade", "UPGRADE", "socket type code"),
    field<Record, &Record::SerialNo>("SerialNo", "SERIAL", "serial number"),
    field<Record, &Record::AssetTag>("AssetTag", "ASSET", "asset tag"),
    field<Record, &Record::PartNo>("PartNo", "PART", "part number"),
    field<Record, &Record::CoreCount>("CoreCount", "CORES", "cores", Shown::kByDefault),
    field<Record, &Record::CoreEnabled>("CoreEnabled", "ENABLED", "enabled cores"),
    field<Record, &Record::ThreadCount>("ThreadCount", "THREADS", "threads", Shown::kByDefault),
    field<Record, &Record::Characteristics, 4>("Characteristics", "CHARACTERISTICS", "characteristics bits"),
    field<Record, &Record::L1CacheMaxSize>("L1CacheMaxSize", "L1MAX", "level-1 cache: largest size, KiB"),
    field<Record, &Record::L1CacheInstalled>("L1CacheInstalled", "L1", "level-1 cache: installed size, KiB"),
    field<Record, &Record::L1CacheType>("L1CacheType", "L1TYPE", "level-1 cache: type code"),
    field<Record, &Record::L1CacheConfig, 4>("L1CacheConfig", "L1CONFIG",
                                             "level-1 cache: configuration bits"),
    field<Record, &Record::L2CacheMaxSize>("L2CacheMaxSize", "L2MAX", "level-2 cache: largest size, KiB"),
    field<Record, &Record::L2CacheInstalled>("L2CacheInstalled", "L2", "level-2 cache: installed size, KiB"),
    field<Record, &Record::L2CacheType>("L2CacheType", "L2TYPE", "level-2 cache: type code"),
    field<Record, &Record::L2CacheConfig, 4>("L2CacheConfig", "L2CONFIG",
                                             "level-2 cache: configuration bits"),
    field<Record, &Record::L3CacheMaxSize>("L3CacheMaxSize", "L3MAX", "level-3 cache: largest size, KiB"),
    field<Record, &Record::L3CacheInstalled>("L3CacheInstalled", "L3", "level-3 cache: installed size, KiB"),
    field<Record, &Record::L3CacheType>("L3CacheType", "L3TYPE", "level-3 cache: type code"),
    field<Record, &Record::L3CacheConfig, 4>("L3CacheConfig", "L3CONFIG",
                                             "level-3 cache: configuration bits"),
    field<Record, &Record::NodeIndex>("NodeIndex", "NODE", "node that the processor belongs to"),
};

std::vector<Record> read_processors() {
  const auto read = [](Record& processor, uint32_t id) {
    processor._id = id;
    return zymdb_get_processor(&processor);
  };
  return read_records_by_id<Record>(zymdb_get_processor_list, read, "read the processors");
}

}  // namespace

void add_show_processors(CommandTree& tree, CLI::App& show) {
  add_listing(tree, show,
              make_listing<Record>("processors", "Processors and their sockets", kColumns, read_processors),
              kExamples);
}

}  // namespace zymdb::tool
