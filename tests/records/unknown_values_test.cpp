// What nobody knows is no value, in every record: never a 0, a 255 or the word "Unknown".
#include <gtest/gtest.h>

#include "records/cpu_mem.h"
#include "records/firmware.h"
#include "records/network.h"
#include "records/pci.h"
#include "records/storage.h"
#include "records/system.h"
#include "support/inventory.h"

namespace zymdb::records {
namespace {

class UnknownValues : public InventoryTest {
 protected:
  static Value value(const RecordType& type, const char* field, size_t row = 0) {
    return type.list({find_field(type, field).value()}).rows.at(row).at(0).value;
  }
  static void expect_unknown(const RecordType& type, std::initializer_list<const char*> fields) {
    for (const char* field : fields) EXPECT_EQ(value(type, field), Value()) << field;
  }
  static RecordType functions() { return records::functions(std::make_shared<std::string>(kPciIdsFile)); }
};

TEST_F(UnknownValues, OfTheMachineAreTheTextsThatNobodyGave) {
  given("System", {{"Model", "ES-2240"}, {"SKU", ""}});
  expect_unknown(system(), {"SKU", "SerialNo", "UUID"});
  EXPECT_EQ(value(system(), "Model"), Value("ES-2240"));
}

TEST_F(UnknownValues, OfAnEmbeddedDeviceAreTheNumbersThatNobodyStored) {
  given("EmbeddedDeviceFirmware", {{"SoftwareID", "0123456789ABCDEF"}, {"DeviceIndex", 0}, {"Class", 0}});
  given("EmbeddedDeviceFirmware", {{"SoftwareID", "0123456789ABCDEF"}, {"DeviceIndex", 1}, {"Checksum", 0}});
  expect_unknown(embedded_devices(), {"StructRev", "Version", "VersionString", "Category", "Checksum"});
  EXPECT_EQ(value(embedded_devices(), "Class"), Value(uint64_t{0}));
  EXPECT_EQ(value(embedded_devices(), "Checksum", 1), Value(uint64_t{0}));
  EXPECT_EQ(value(embedded_devices(), "Class", 1), Value());
}

TEST_F(UnknownValues, OfAPldmDeviceAreTheNumbersThatNobodyStored) {
  given("PldmDeviceFirmware", {{"SoftwareID", "01234567"}, {"Location", 0}, {"SlotNo", 0}});
  given("PldmDeviceFirmware", {{"SoftwareID", "01234567"}, {"SlotNo", 1}, {"Status", 0}});
  expect_unknown(pldm_devices(), {"DeviceType", "PCIKey", "PCIFuncKey", "UpdateMethod", "Status"});
  EXPECT_EQ(value(pldm_devices(), "Place"), Value("on board"));
  EXPECT_EQ(value(pldm_devices(), "Place", 1), Value());
  EXPECT_EQ(value(pldm_devices(), "Status", 1), Value(uint64_t{0}));
}

// Whose row is whose cannot be told then: each shows what its own record has.
TEST_F(UnknownValues, OfDevicesOfOneNameAreNotTakenFromEachOther) {
  given("PldmDeviceFirmware", {{"SoftwareID", "01234567"}, {"SlotNo", 1}, {"Location", 1}, {"Status", 2}});
  given("PldmDeviceFirmware", {{"SoftwareID", "01234567"}, {"SlotNo", 1}, {"Location", 1}, {"Status", 0}});
  given("EmbeddedDeviceFirmware",
        {{"SoftwareID", "BIOS"}, {"DeviceIndex", 0}, {"Version", 3}, {"VersionString", "3.0c"}});
  given("EmbeddedDeviceFirmware",
        {{"SoftwareID", "BIOS"}, {"DeviceIndex", 0}, {"Version", 4}, {"VersionString", "4.1"}});
  EXPECT_EQ(value(pldm_devices(), "Status"), Value(uint64_t{2}));
  EXPECT_EQ(value(pldm_devices(), "Status", 1), Value(uint64_t{0}));
  EXPECT_EQ(value(embedded_devices(), "VersionString"), Value("3"));
  EXPECT_EQ(value(embedded_devices(), "VersionString", 1), Value("4"));
  EXPECT_EQ(value(embedded_devices(), "VERSIONNO", 1), Value(uint64_t{4}));
}

TEST_F(UnknownValues, OfAnEmptySocketAreItsSpeedsAndCores) {
  given("Processor",
        {{"Status", 0x01}, {"MaxSpeed", 4000}, {"CurSpeed", 2000}, {"CoreCount", 8}, {"ThreadCount", 16}});
  expect_unknown(processors(), {"MaxSpeed", "CurSpeed", "CoreCount", "CoreEnabled", "ThreadCount"});
  EXPECT_EQ(value(processors(), "State"), Value("empty"));
}

TEST_F(UnknownValues, OfAProcessorAreSpeedsAndCoresOfZero) {
  given("Processor",
        {{"Status", 0x41}, {"MaxSpeed", 0}, {"CurSpeed", 0}, {"CoreCount", 0}, {"ThreadCount", 0}});
  expect_unknown(processors(), {"MaxSpeed", "CurSpeed", "CoreCount", "ThreadCount"});
}

TEST_F(UnknownValues, OfAnEmptyMemoryPositionAreItsSpeeds) {
  given("Memory", {{"SlotNo", 1}, {"MemSize", 0}, {"MaxSpeed", 0}, {"ClockSpeed", 0}});
  expect_unknown(memory_modules(), {"MaxSpeed", "ClockSpeed", "MemTypeName", "Health"});
  EXPECT_EQ(value(memory_modules(), "MemSize"), Value(uint64_t{0}));
  EXPECT_EQ(value(memory_modules(), "Size"), Value("empty"));
}

TEST_F(UnknownValues, OfAMemoryModuleAreTheOnesThatItDoesNotReport) {
  given("Memory", {{"InfoMask", 0}, {"RemainingLife", 0}, {"HealthStatus", 0}, {"SecurityState", 0}});
  given("Memory", {{"InfoMask", 1}, {"RemainingLife", 0}, {"HealthStatus", 0}, {"SecurityState", 0}});
  const auto type = memory_modules();
  expect_unknown(type, {"RemainingLife", "HealthStatus", "Health", "SecurityState", "Security"});
  EXPECT_EQ(value(type, "RemainingLife", 1), Value(uint64_t{0}));
  EXPECT_EQ(value(type, "Health", 1), Value("Normal"));
}

// The library gives such a link four lanes of sixteen.
TEST_F(UnknownValues, OfAFunctionIsALinkThatNobodyHasSeen) {
  given("PCIs", {{"FunKey", 0x010000}, {"SegNo", 0}, {"BusNo", 1}, {"DeviceNo", 0}, {"FunctionNo", 0}});
  expect_unknown(functions(), {"LanesInUse", "MaxLanes", "PCIeType", "MaxPCIeType", "Link", "LinkState"});
  expect_unknown(functions(), {"BridgeId", "Bridge", "SubVendorId", "SubDeviceId", "SubsystemId"});
}

TEST_F(UnknownValues, OfAnAdapterAreItsPackagesAndItsConnector) {
  given("PCIs", {{"FunKey", 0x010000},
                 {"DevKey", 1},
                 {"SegNo", 0},
                 {"BusNo", 1},
                 {"DeviceNo", 0},
                 {"FunctionNo", 0},
                 {"NodeIndex", 0},
                 {"Location", 1},
                 {"SlotNo", 1}});
  given("PCIAdapter", {{"PCIFuncKey", 0x010000},
                       {"PCIKey", 1},
                       {"NodeNo", 0},
                       {"Location", 1},
                       {"SlotNo", 1},
                       {"CardName", "a card"},
                       {"AIMSupported", 0},
                       {"HealthStatus", 0}});
  expect_unknown(adapters(), {"PackageID1", "PackageID2", "ConnectorTypeName"});
  EXPECT_EQ(value(adapters(), "Address"), Value("0000:01:00.0"));
}

TEST_F(UnknownValues, OfAPortAreItsConnectorAndTheSpeedOfNoLink) {
  given("PCIs", {{"FunKey", 0x010000}, {"SegNo", 0}, {"BusNo", 1}, {"DeviceNo", 0}, {"FunctionNo", 0}});
  given("PCINetwork", {{"PCIFuncKey", 0x010000}, {"NumberofPhysicalPorts", 1}});
  given("PCIPhysicalPort", {{"PCIFuncKey", 0x010000}, {"Idx", 0}});
  given("PCIPhysicalPortStat", {{"PCIFuncKey", 0x010000}, {"Idx", 0}, {"LinkStatus", 0}, {"LinkSpeed", 0}});
  expect_unknown(physical_ports(),
                 {"ConnectorLayoutName", "PermanentAddress", "LinkStatus", "LinkSpeed", "LinkSpeedText"});
  EXPECT_EQ(value(physical_ports(), "Link"), Value("unknown"));
}

TEST_F(UnknownValues, OfADriveAreItsOwnWithoutHealthData) {
  given("AimDisks", {{"LocationId", 2}, {"BayNo", 5}, {"DriveTypeId", 1}, {"Presence", 1}, {"InfoMask", 0}});
  expect_unknown(drives(), {"Temperature", "RemainLife", "Warning", "SFlags", "PCIFuncKey", "Function"});
}

TEST_F(UnknownValues, OfADriveAreNotTheOnesThatItReports) {
  given("AimDisks", {{"LocationId", 2},
                     {"BayNo", 5},
                     {"DriveTypeId", 1},
                     {"Presence", 1},
                     {"InfoMask", 15},
                     {"Temperature", 0}});
  for (const char* field : {"Temperature", "RemainLife", "Warning", "SFlags"})
    EXPECT_EQ(value(drives(), field), Value(uint64_t{0})) << field;
}

}  // namespace
}  // namespace zymdb::records
