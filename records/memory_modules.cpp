#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "records/cpu_mem.h"
#include "records/stored_rows.h"
#include "records/text.h"
#include "zymdb_cpu_mem.h"

namespace zymdb::records {
namespace {

struct Module : Stored<_ZYMDB_Memory> {
  std::string locator;  // of this position alone
};

// SMBIOS's memory types, by code.
constexpr const char* kTypes[] = {
    "",       "other",      "",      "DRAM",  "EDRAM", "VRAM",   "SRAM",  "RAM",   "ROM",    "flash",
    "EEPROM", "",           "EPROM", "CDRAM", "3DRAM", "SDRAM",  "SGRAM", "RDRAM", "DDR",    "DDR2",
    "DDR2",   "",           "",      "",      "DDR3",  "FBD2",   "DDR4",  "LPDDR", "LPDDR2", "LPDDR3",
    "LPDDR4", "persistent", "HBM",   "HBM2",  "DDR5",  "LPDDR5", "HBM3",
};

// The column's own number: a field's low bits may be those of another one.
std::optional<uint64_t> number(const Module& module, const char* column) {
  const Value* const stored = module.stored(column);
  const auto* const known = stored == nullptr ? nullptr : std::get_if<uint64_t>(stored);
  return known == nullptr ? std::nullopt : std::optional(*known);
}

Value type(const Module& module) {
  const auto code = number(module, "MemType").value_or(0);
  return value_of(std::string(code < std::size(kTypes) ? kTypes[code] : ""));
}

// The collector knows no type of a module that is not there.
bool is_empty(const Module& module) {
  return number(module, "MemSize") == uint64_t{0} && number(module, "MemType").value_or(0) == 0;
}

Value size(const Module& module) {
  if (is_empty(module)) return kEmpty;
  const auto mebibytes = number(module, "MemSize").value_or(0);
  return mebibytes == 0 ? Value() : size_text(mebibytes);
}

Attention size_attention(const Module& module) {
  return is_empty(module) ? Attention::kAbsent : Attention::kNone;
}

// A persistent module's own values count when it says which of them are valid.
bool reports_itself(const Module& module) {
  return module.InfoMask != 0;
}

constexpr unsigned kNormal = 0;

Value health_text(unsigned code) {
  std::array<char, 32> text{};
  bps_format_hstate_str(code, text.data(), text.size());
  return value_of(std::string(text.data()));
}

Value health(const Module& module) {
  return health_text(module.HealthStatus);
}

Attention health_attention(const Value& health) {
  return health == health_text(kNormal) ? Attention::kNone : Attention::kWarning;
}

Value security(const Module& module) {
  std::array<char, 32> text{};
  bps_format_security_str(module.SecurityState, text.data(), text.size());
  return value_of(std::string(text.data()));
}

constexpr Field<Module> kFields[] = {
    ZYMDB_RECORD_FIELD(Module, _id, "ID", "row of the inventory").row(),
    ZYMDB_RECORD_FIELD(Module, ArrayId, "ARRAY", "memory array that holds the position"),
    ZYMDB_RECORD_FIELD(Module, SlotNo, "SLOT", "number of the position")
        .place()
        .shown()
        .noted(size_attention),
    ZYMDB_RECORD_FIELD(Module, TotalWidth, "TOTALWIDTH", "total width").unit("bits").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Module, DataWidth, "WIDTH", "data width").unit("bits").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Module, MemSize, "MEMSIZE", "size; 0 of an empty position").unit("MiB").model(),
    derived<Module>("Size", "SIZE", "what MemSize says", size).shown().noted(size_attention).model(),
    ZYMDB_RECORD_FIELD(Module, FormFactor, "FORM", "form factor code"),
    ZYMDB_RECORD_FIELD(Module, MemType, "MEMTYPE", "memory type code").hex(2).model(),
    derived<Module>("MemTypeName", "TYPE", "what MemType says", type).shown().model(),
    ZYMDB_RECORD_FIELD(Module, TypeDetail, "DETAIL", "type detail bits; 0x1000: non-volatile").hex(4),
    ZYMDB_RECORD_FIELD(Module, MaxSpeed, "MAXMTS", "highest speed").unit("MT/s").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Module, ClockSpeed, "MTS", "configured speed").unit("MT/s").zero_is_unknown().shown(),
    derived<Module>("Locator", "LOCATOR",
                    "the board's name for the position, with its bank's where others have the same",
                    [](const Module& module) { return value_of(module.locator); })
        .place()
        .shown(),
    ZYMDB_RECORD_FIELD(Module, DevLocator, "DEVLOCATOR", "the board's name for the position").place(),
    ZYMDB_RECORD_FIELD(Module, BankLocator, "BANK", "the board's name for its bank").place(),
    ZYMDB_RECORD_FIELD(Module, Manufacturer, "MANUFACTURER", "manufacturer")
        .tells(Tells::kMaker)
        .shown()
        .model(),
    ZYMDB_RECORD_FIELD(Module, SerialNo, "SERIAL", "serial number").identity(),
    ZYMDB_RECORD_FIELD(Module, AssetTag, "ASSET", "asset tag"),
    ZYMDB_RECORD_FIELD(Module, PartNo, "PART", "part number").tells(Tells::kName).long_text().shown().model(),
    ZYMDB_RECORD_FIELD(Module, Attributes, "ATTRIBUTES", "attributes; lowest digit: the rank").hex(2),
    ZYMDB_RECORD_FIELD(Module, NodeIndex, "NODE", "node that the module belongs to"),
    ZYMDB_RECORD_FIELD(Module, Capacity, "CAPACITY", "persistent module: capacity").unit("bytes"),
    ZYMDB_RECORD_FIELD(Module, MemCapacity, "MEMORYMODE", "... of it in memory mode").unit("bytes"),
    ZYMDB_RECORD_FIELD(Module, AppDirCap, "APPDIRECT", "... of it app-direct").unit("bytes"),
    ZYMDB_RECORD_FIELD(Module, UnconfigCap, "UNCONFIGURED", "... of it unconfigured").unit("bytes"),
    ZYMDB_RECORD_FIELD(Module, InaccCap, "INACCESSIBLE", "... of it inaccessible").unit("bytes"),
    ZYMDB_RECORD_FIELD(Module, ReservedCap, "RESERVED", "... of it reserved").unit("bytes"),
    ZYMDB_RECORD_FIELD(Module, Classification, "CLASSIFICATION", "module classification code"),
    ZYMDB_RECORD_FIELD(Module, RemainingLife, "LIFE", "remaining life")
        .unit("%")
        .changing()
        .known_if(reports_itself),
    ZYMDB_RECORD_FIELD(Module, SecurityState, "SECURITYSTATE", "security state bits")
        .hex(2)
        .known_if(reports_itself)
        .state(),
    derived<Module>("Security", "SECURITY", "what SecurityState says", security)
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Module, HealthStatus, "HEALTHSTATUS", "health code").known_if(reports_itself).state(),
    derived<Module>("Health", "HEALTH", "what HealthStatus says", health)
        .known_if(reports_itself)
        .judged(health_attention)
        .state(),
    ZYMDB_RECORD_FIELD(Module, AlarmTrips, "ALARMS", "alarm trip bits")
        .hex(2)
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Module, LDShutdownCount, "DIRTYSHUTDOWNS", "dirty shutdowns")
        .amount()
        .known_if(reports_itself),
    ZYMDB_RECORD_FIELD(Module, AITDRAMStatus, "AITDRAM", "state of the address translation table's DRAM")
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Module, HealthStatusReason, "REASON", "reasons of the health")
        .hex(4)
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Module, LLShutdownStatus, "LASTSHUTDOWN", "last shutdown status")
        .hex(2)
        .known_if(reports_itself)
        .state(),
    ZYMDB_RECORD_FIELD(Module, InfoMask, "MASK", "which of the module's own values are valid").hex(2),
    ZYMDB_RECORD_FIELD(Module, CPUIndex, "CPU", "place: processor").place(),
    ZYMDB_RECORD_FIELD(Module, iMCNum, "CONTROLLER", "place: memory controller").place(),
    ZYMDB_RECORD_FIELD(Module, ChannelNum, "CHANNEL", "place: channel").place(),
    ZYMDB_RECORD_FIELD(Module, DimmNum, "DIMM", "place: module on the channel").place(),
    ZYMDB_RECORD_FIELD(Module, FirmwareVersion, "FIRMWARE", "firmware version")
        .tells(Tells::kFirmware)
        .version(),
    ZYMDB_RECORD_FIELD(Module, SoftwareID, "SOFTWARE", "firmware's software identifier"),
    ZYMDB_RECORD_FIELD(Module, MajorHealth, "MAJORHEALTH", "major health state"),
    ZYMDB_RECORD_FIELD(Module, MinorHealth, "MINORHEALTH", "minor health state"),
    ZYMDB_RECORD_FIELD(Module, RepairStatus, "REPAIR", "repair status"),
};

// Where several positions bear one name, only their banks tell them apart.
void set_locators(std::vector<Module>& modules) {
  std::map<std::string, int> uses;
  for (const auto& module : modules) ++uses[module.DevLocator];
  for (auto& module : modules) {
    const bool is_shared = uses[module.DevLocator] > 1 && module.BankLocator[0] != '\0';
    module.locator =
        is_shared ? module.BankLocator + std::string(" ") + module.DevLocator : module.DevLocator;
  }
}

std::vector<Module> list_modules() {
  const Reading reading("memory");
  const auto rows = read_stored_rows(reading, "Memory", "_id", number_columns(kFields));
  auto modules = read_by_id<Module>(reading, zymdb_get_memory_list, [&](Module& module, uint32_t id) {
    if (const auto row = rows.find(id); row != rows.end()) module.row = row->second;
    return zymdb_get_memory_by_id(&module, id);
  });
  set_locators(modules);
  // A module that was exchanged has a later row.
  std::ranges::stable_sort(modules, {}, &Module::SlotNo);
  return modules;
}

}  // namespace

RecordType memory_modules() {
  return describe<Module>("memory", "Memory modules and the positions for them", kFields, list_modules);
}

}  // namespace zymdb::records
