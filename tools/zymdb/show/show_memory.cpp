#include <algorithm>
#include <array>

#include "commands/commands.h"
#include "show/memory_text.h"
#include "show/records_by_id.h"
#include "zymdb_cpu_mem.h"

namespace zymdb::tool {
namespace {

using Record = _ZYMDB_Memory;

constexpr char kExamples[] =
    "  zymdb show memory\n"
    "  zymdb show memory --columns SLOT,LOCATOR,SIZE,SERIAL --no-headings\n"
    "  zymdb show memory --json | jq '[.memory[].MemSize] | add'";

// SMBIOS's memory types, by code.
constexpr const char* kTypes[] = {
    "",       "other",      "",      "DRAM",  "EDRAM", "VRAM",   "SRAM",  "RAM",   "ROM",    "flash",
    "EEPROM", "",           "EPROM", "CDRAM", "3DRAM", "SDRAM",  "SGRAM", "RDRAM", "DDR",    "DDR2",
    "DDR2",   "",           "",      "",      "DDR3",  "FBD2",   "DDR4",  "LPDDR", "LPDDR2", "LPDDR3",
    "LPDDR4", "persistent", "HBM",   "HBM2",  "DDR5",  "LPDDR5", "HBM3",
};

Value type(const Record& module) {
  return std::string(module.MemType < std::size(kTypes) ? kTypes[module.MemType] : "");
}

// The collector knows no type of a module that is not there.
bool is_empty(const Record& module) {
  return module.MemSize == 0 && module.MemType == 0;
}

Value size(const Record& module) {
  if (is_empty(module)) return std::string("empty");
  return module.MemSize == 0 ? std::string() : size_text(module.MemSize);
}

Tone size_tone(const Record& module) {
  return is_empty(module) ? Tone::kFaint : Tone::kPlain;
}

// A persistent module's own values count when it says which of them are valid.
Value health(const Record& module) {
  if (module.InfoMask == 0) return std::string();
  std::array<char, 32> text{};
  bps_format_hstate_str(module.HealthStatus, text.data(), text.size());
  return std::string(text.data());
}

Tone health_tone(const Record& module) {
  return module.InfoMask != 0 && module.HealthStatus != 0 ? Tone::kWarning : Tone::kPlain;
}

Value security(const Record& module) {
  if (module.InfoMask == 0) return std::string();
  std::array<char, 32> text{};
  bps_format_security_str(module.SecurityState, text.data(), text.size());
  return std::string(text.data());
}

constexpr Column<Record> kColumns[] = {
    field<Record, &Record::_id>("_id", "ID", "row of the inventory"),
    field<Record, &Record::ArrayId>("ArrayId", "ARRAY", "memory array that holds the position"),
    field<Record, &Record::SlotNo>("SlotNo", "SLOT", "number of the position", Shown::kByDefault, size_tone),
    field<Record, &Record::TotalWidth>("TotalWidth", "TOTALWIDTH", "total width, bits"),
    field<Record, &Record::DataWidth>("DataWidth", "WIDTH", "data width, bits"),
    field<Record, &Record::MemSize>("MemSize", "MEMSIZE", "size, MiB; 0 when empty or not known"),
    derived<Record>("SIZE", "what MemSize says", Shown::kByDefault, size, size_tone),
    field<Record, &Record::FormFactor>("FormFactor", "FORM", "form factor code"),
    field<Record, &Record::MemType, 2>("MemType", "MEMTYPE", "memory type code"),
    derived<Record>("TYPE", "what MemType says", Shown::kByDefault, type),
    field<Record, &Record::TypeDetail, 4>("TypeDetail", "DETAIL", "type detail bits; 0x1000: non-volatile"),
    field<Record, &Record::MaxSpeed>("MaxSpeed", "MAXMTS", "highest speed, MT/s"),
    field<Record, &Record::ClockSpeed>("ClockSpeed", "MTS", "configured speed, MT/s", Shown::kByDefault),
    field<Record, &Record::DevLocator>("DevLocator", "LOCATOR", "the board's name for the position",
                                       Shown::kByDefault),
    field<Record, &Record::BankLocator>("BankLocator", "BANK", "the board's name for its bank"),
    field<Record, &Record::Manufacturer>("Manufacturer", "MANUFACTURER", "manufacturer", Shown::kByDefault),
    field<Record, &Record::SerialNo>("SerialNo", "SERIAL", "serial number"),
    field<Record, &Record::AssetTag>("AssetTag", "ASSET", "asset tag"),
    long_text(field<Record, &Record::PartNo>("PartNo", "PART", "part number", Shown::kByDefault)),
    field<Record, &Record::Attributes, 2>("Attributes", "ATTRIBUTES", "attributes; lowest digit: the rank"),
    field<Record, &Record::NodeIndex>("NodeIndex", "NODE", "node that the module belongs to"),
    field<Record, &Record::Capacity>("Capacity", "CAPACITY", "persistent module: capacity, bytes"),
    field<Record, &Record::MemCapacity>("MemCapacity", "MEMORYMODE", "... of it in memory mode"),
    field<Record, &Record::AppDirCap>("AppDirCap", "APPDIRECT", "... of it app-direct"),
    field<Record, &Record::UnconfigCap>("UnconfigCap", "UNCONFIGURED", "... of it unconfigured"),
    field<Record, &Record::InaccCap>("InaccCap", "INACCESSIBLE", "... of it inaccessible"),
    field<Record, &Record::ReservedCap>("ReservedCap", "RESERVED", "... of it reserved"),
    field<Record, &Record::Classification>("Classification", "CLASSIFICATION", "module classification code"),
    field<Record, &Record::RemainingLife>("RemainingLife", "LIFE", "remaining life, percent"),
    field<Record, &Record::SecurityState, 2>("SecurityState", "SECURITYSTATE", "security state bits"),
    derived<Record>("SECURITY", "what SecurityState says", Shown::kNo, security),
    field<Record, &Record::HealthStatus>("HealthStatus", "HEALTHSTATUS", "health code"),
    derived<Record>("HEALTH", "what HealthStatus says", Shown::kNo, health, health_tone),
    field<Record, &Record::AlarmTrips, 2>("AlarmTrips", "ALARMS", "alarm trip bits"),
    field<Record, &Record::LDShutdownCount>("LDShutdownCount", "DIRTYSHUTDOWNS", "dirty shutdowns"),
    field<Record, &Record::AITDRAMStatus>("AITDRAMStatus", "AITDRAM",
                                          "state of the address translation table's DRAM"),
    field<Record, &Record::HealthStatusReason, 4>("HealthStatusReason", "REASON", "reasons of the health"),
    field<Record, &Record::LLShutdownStatus, 2>("LLShutdownStatus", "LASTSHUTDOWN", "last shutdown status"),
    field<Record, &Record::InfoMask, 2>("InfoMask", "MASK", "which of the module's own values are valid"),
    field<Record, &Record::CPUIndex>("CPUIndex", "CPU", "place: processor"),
    field<Record, &Record::iMCNum>("iMCNum", "CONTROLLER", "place: memory controller"),
    field<Record, &Record::ChannelNum>("ChannelNum", "CHANNEL", "place: channel"),
    field<Record, &Record::DimmNum>("DimmNum", "DIMM", "place: module on the channel"),
    field<Record, &Record::FirmwareVersion>("FirmwareVersion", "FIRMWARE", "firmware version"),
    field<Record, &Record::SoftwareID>("SoftwareID", "SOFTWARE", "firmware's software identifier"),
    field<Record, &Record::MajorHealth>("MajorHealth", "MAJORHEALTH", "major health state"),
    field<Record, &Record::MinorHealth>("MinorHealth", "MINORHEALTH", "minor health state"),
    field<Record, &Record::RepairStatus>("RepairStatus", "REPAIR", "repair status"),
};

std::vector<Record> read_memory() {
  const auto read = [](Record& module, uint32_t id) { return zymdb_get_memory_by_id(&module, id); };
  auto modules = read_records_by_id<Record>(zymdb_get_memory_list, read, "read the memory");
  // A module that was exchanged has a later row.
  std::ranges::stable_sort(modules, {}, &Record::SlotNo);
  return modules;
}

}  // namespace

void add_show_memory(CommandTree& tree, CLI::App& show) {
  add_listing(
      tree, show,
      make_listing<Record>("memory", "Memory modules and the positions for them", kColumns, read_memory),
      kExamples);
}

}  // namespace zymdb::tool
