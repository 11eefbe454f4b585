// Lists, at sizes from a small server's to ten times the largest's.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <syslog.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

#include "comparison.h"
#include "db/code_text.h"
#include "firmware/classification.h"
#include "pci/slot_type.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_storage.h"

using bench::Columns;
using bench::GrowingArray;
using bench::kBusyFunction;
using bench::Statements;
using zymdb::copy_text;

namespace {

constexpr int kSizes[] = {10, 100, 1000, 10000};

// A list of `rows` records, whose last one tells by `is_last` that it was read whole.
template <class Record, class IsLast>
bool is_list(size_t count, const Record* records, int rows, IsLast is_last) {
  return count == static_cast<size_t>(rows) && is_last(records[count - 1]);
}

void add_adapters(int rows) {
  constexpr auto is_last = [](const _ZYMDB_PCI_Adapter& adapter) {
    return std::strcmp(adapter.ConnectorTypeName, "PCI-E Gen 3 x16") == 0 && adapter.HealthStatus == 1;
  };
  bench::add(
      {"adapters",
       rows,
       {"SELECT SlotNo,Location,PackageID1,PackageID2 FROM NCSIPackageID",
        "SELECT "
        "PCIKey,NodeNo,SlotNo,HealthStatus,ConnectorType,CardName,AIMSupported,Location,PCIFuncKey,count(*) "
        "FROM PCIAdapter WHERE 1 GROUP BY PCIKey"},
       [=](int) {
         _ZYMDB_PCI_Adapter_List list{};
         zymdb_get_pci_adapter_list(&list);
         const bool is_right = is_list(list.count, list.adapters, rows, is_last);
         std::free(list.adapters);
         return is_right;
       },
       [=](Statements& raw, int) {
         struct Package {
           uint16_t slot;
           uint8_t location, id1, id2;
         };
         GrowingArray<Package> packages;
         raw.each(0, [&](Columns row) {
           Package& package = packages.add();
           package.slot = row.number(), package.location = row.number();
           package.id1 = row.number(), package.id2 = row.number();
         });
         GrowingArray<_ZYMDB_PCI_Adapter> adapters;
         raw.each(1, [&](Columns row) {
           _ZYMDB_PCI_Adapter& adapter = adapters.add_zeroed();
           adapter.PCIKey = row.number(), adapter.NodeNo = row.number(), adapter.SlotNo = row.number();
           adapter.HealthStatus = row.number(), adapter.ConnectorType = row.number_in_text();
           row.text(adapter.CardName);
           adapter.AIMSupported = row.number(), adapter.Location = row.number();
           benchmark::DoNotOptimize(row.number().value + row.number().value);
           copy_text(adapter.ConnectorTypeName, zymdb::slot_type_name(adapter.ConnectorType));
           adapter.PackageID1 = adapter.PackageID2 = 0xFF;
           for (size_t i = 0; i < packages.count(); ++i) {
             const Package& package = packages.begin()[i];
             if (package.location != adapter.Location || package.slot != adapter.SlotNo) continue;
             adapter.NcsiIdValid = 1, adapter.PackageID1 = package.id1, adapter.PackageID2 = package.id2;
             break;
           }
         });
         return is_list(adapters.count(), adapters.begin(), rows, is_last);
       }});
}

void add_functions(int rows) {
  constexpr auto is_last = [](const _ZYMDB_PCI_Generic& function) { return function.PCIeType == 3; };
  bench::add({"functions",
              rows,
              {"SELECT " ZYMDB_FUNCTION_COLUMNS " FROM PCIs WHERE Location!=9"},
              [=](int) {
                _ZYMDB_PCI_Generic_List list{};
                zymdb_get_pci_generic_info_list(&list, "Location!=9");
                const bool is_right = is_list(list.count, list.items, rows, is_last);
                std::free(list.items);
                return is_right;
              },
              [=](Statements& raw, int) {
                GrowingArray<_ZYMDB_PCI_Generic> functions;
                raw.each(0, [&](Columns row) { bench::read_function(row, functions.add()); });
                return is_list(functions.count(), functions.begin(), rows, is_last);
              }});
}

void add_physical_ports(int rows) {
  static constexpr zymdb::CodeText kLayouts[] = {{0x8007, "SFP28"}};
  constexpr auto is_last = [](const _ZYMDB_PCI_PhysicalPort& port) {
    return std::strcmp(port.ConnectorLayoutName, "SFP28") == 0 && port.LinkSpeed == 25000;
  };
  bench::add({"physical ports",
              rows,
              {"SELECT PCIFuncKey,NumberofPhysicalPorts FROM PCINetwork WHERE PCIFuncKey=?",
               "SELECT ConnectorLayout,Idx,NumberofLogicalPorts,PermanentAddress FROM PCIPhysicalPort "
               "WHERE PCIFuncKey=?",
               "SELECT LinkStatus,LinkSpeed,TxUtil,RxUtil FROM PCIPhysicalPortStat WHERE PCIFuncKey=?"},
              [=](int) {
                _ZYMDB_PCI_PhysicalPort_List list{};
                zymdb_get_network_physical_port_list(kBusyFunction, &list);
                const bool is_right = is_list(list.count, list.ports, rows, is_last);
                std::free(list.ports);
                return is_right;
              },
              [=](Statements& raw, int) {
                uint32_t room = 0;
                raw.one(
                    0, [&](Columns row) { row.number(), room = row.number(); }, kBusyFunction);
                auto* const ports =
                    static_cast<_ZYMDB_PCI_PhysicalPort*>(std::calloc(room, sizeof(_ZYMDB_PCI_PhysicalPort)));
                auto* end = ports;
                const auto read_port = [&](Columns row) {
                  end->ConnectorLayout = row.number_in_text(), end->Idx = row.number();
                  end->NumberofLogicalPorts = row.number();
                  row.text(end->PermanentAddress);
                  copy_text(end->ConnectorLayoutName, zymdb::text_of(kLayouts, end->ConnectorLayout));
                  ++end;
                };
                raw.each(1, read_port, kBusyFunction);
                auto* port = ports;
                const auto read_state = [&](Columns row) {
                  port->LinkStatus = row.number(), port->LinkSpeed = row.number();
                  port->TxUtil = row.number(), port->RxUtil = row.number();
                  ++port;
                };
                raw.each(2, read_state, kBusyFunction);
                const bool is_right = is_list(static_cast<size_t>(end - ports), ports, rows, is_last);
                std::free(ports);
                return is_right;
              }});
}

void add_logical_ports(int rows) {
  static constexpr zymdb::CodeText kTechnologies[] = {{2, "Ethernet"}};
  static constexpr zymdb::CodeText kModes[] = {{0, "Disabled"}};
  static constexpr zymdb::CodeText kProtocols[] = {{6, "Ethernet"}};
  static constexpr zymdb::CodeText kConnections[] = {{7, "iSCSI"}};
  static constexpr zymdb::CodeText kRoles[] = {{2, "Initiator"}};
  constexpr auto is_last = [](const _ZYMDB_PCI_LogicalPort& port) {
    return std::strcmp(port.RoleName, "Initiator") == 0 && port.MaxDataSize == 9000;
  };
  bench::add(
      {"logical ports",
       rows,
       {"SELECT MaxDataSize,PermanentAddress,NetworkAddresses,PhyIdx,Idx,LinkTechnology,vNICMode,MaxSpeed,"
        "ProtocolType,Ethernet,FCoEFC,iSCSI,FCoEPermanentAddress,FCoENetworkAddressess,ConnectionType,Role,"
        "TargetRelativePortNumber FROM PCILogicalPort WHERE PCIFuncKey=?"},
       [=](int) {
         _ZYMDB_PCI_LogicalPort_List list{};
         zymdb_get_network_logical_port_list(kBusyFunction, &list);
         const bool is_right = is_list(list.count, list.ports, rows, is_last);
         std::free(list.ports);
         return is_right;
       },
       [=](Statements& raw, int) {
         GrowingArray<_ZYMDB_PCI_LogicalPort> ports;
         const auto read = [&](Columns row) {
           _ZYMDB_PCI_LogicalPort& port = ports.add();
           port.MaxDataSize = row.number();
           row.text(port.PermanentAddress), row.text(port.NetworkAddresses);
           port.PhyIdx = row.number(), port.Idx = row.number();
           port.LinkTechnology = row.number_in_text(), port.vNICMode = row.number_in_text();
           port.MaxSpeed = row.number(), port.ProtocolType = row.number(), port.Ethernet = row.number();
           port.FCoEFC = row.number(), port.iSCSI = row.number();
           row.text(port.FCoEPermanentAddress), row.text(port.FCoENetworkAddressess);
           port.ConnectionType = row.number_in_text(), port.Role = row.number_in_text();
           port.TargetRelativePortNumber = row.number();
           copy_text(port.LinkTechnologyName, zymdb::text_of(kTechnologies, port.LinkTechnology));
           copy_text(port.vNICModeName, zymdb::text_of(kModes, port.vNICMode));
           copy_text(port.ProtocolTypeName, zymdb::text_of(kProtocols, port.ProtocolType));
           copy_text(port.ConnectionTypeName, zymdb::text_of(kConnections, port.ConnectionType));
           copy_text(port.RoleName, zymdb::text_of(kRoles, port.Role));
         };
         raw.each(0, read, kBusyFunction);
         return is_list(ports.count(), ports.begin(), rows, is_last);
       }});
}

void add_firmware(int rows) {
  constexpr auto is_last = [](const _ZYMDB_PCI_Firmware& firmware) {
    return std::strcmp(firmware.ClassificationString, "FCODE") == 0;
  };
  bench::add(
      {"firmware of an adapter",
       rows,
       {"SELECT HardwareId,HardwareTypeId FROM PCIs WHERE FunKey=?",
        "SELECT FirmwareName,VersionString,Description,ReleaseDate,Manufacture,Classification,SoftwareID "
        "FROM Firmwares WHERE HardwareTypeId=? AND HardwareId=?"},
       [=](int) {
         _ZYMDB_PCI_Firmware_List list{};
         zymdb_get_pci_firmware_list(kBusyFunction, &list);
         const bool is_right = is_list(list.Count, list.Firmwares, rows, is_last);
         std::free(list.Firmwares);
         return is_right;
       },
       [=](Statements& raw, int) {
         uint32_t id = 0;
         uint32_t type = 0;
         raw.one(
             0, [&](Columns row) { id = row.number(), type = row.number(); }, kBusyFunction);
         GrowingArray<_ZYMDB_PCI_Firmware> components;
         const auto read = [&](Columns row) {
           _ZYMDB_PCI_Firmware& component = components.add();
           row.text(component.FirmwareName), row.text(component.VersionString);
           row.text(component.Description), row.text(component.ReleaseDate);
           row.text(component.Manufacture);
           component.Classification = row.number_in_text();
           row.text(component.SoftwareID);
           copy_text(component.ClassificationString, zymdb::classification_text(component.Classification));
         };
         raw.each(1, read, type, id);
         return is_list(components.count(), components.begin(), rows, is_last);
       }});
}

void add_pldm_firmware(int rows) {
  constexpr auto is_last = [](const _ZYMDB_PLDM_Firmware& firmware) {
    return std::strcmp(firmware.PendingReleaseDate, "2020-03-04") == 0 && firmware.UpdateSupport == 1;
  };
  bench::add(
      {"PLDM firmware",
       rows,
       {"SELECT DeviceName,DeviceType,PCIKey,PCIFuncKey,Location,SlotNo,Manufacture,SoftwareID,VersionString,"
        "PendingVersionString,PkgVersionString,ReleaseDate,PendingReleaseDate,UpdateSupport,UpdateMethod,"
        "UpdateAuxInfo,Updated,UpdateErrCode,UpdateErrString,Status FROM PldmDeviceFirmware"},
       [=](int) {
         _ZYMDB_PLDM_Firmware_List list{};
         zymdb_get_pldm_firmware_list(&list);
         const bool is_right = is_list(list.Count, list.Firmwares, rows, is_last);
         std::free(list.Firmwares);
         return is_right;
       },
       [=](Statements& raw, int) {
         GrowingArray<_ZYMDB_PLDM_Firmware> components;
         raw.each(0, [&](Columns row) {
           _ZYMDB_PLDM_Firmware& c = components.add();
           row.text(c.DeviceName);
           c.DeviceType = row.number(), c.PCIKey = row.number(), c.PCIFuncKey = row.number();
           c.Location = row.number(), c.SlotNo = row.number();
           row.text(c.Manufacture), row.text(c.SoftwareID), row.text(c.VersionString);
           row.text(c.PendingVersionString), row.text(c.PkgVersionString), row.text(c.ReleaseDate);
           row.text(c.PendingReleaseDate);
           c.UpdateSupport = row.number(), c.UpdateMethod = row.number(), c.UpdateAuxInfo = row.number();
           c.Updated = row.number(), c.UpdateErrCode = row.number();
           row.text(c.UpdateErrString);
           c.Status = row.number();
         });
         return is_list(components.count(), components.begin(), rows, is_last);
       }});
}

void add_settings(int rows) {
  using Setting = ZYMDB_PCI_Config_Setting;
  constexpr auto is_last = [](const Setting& setting) {
    return std::strcmp(setting.Choices, "Enabled;Disabled") == 0 && setting.Maxs == 64;
  };
  // The caller's array, which is his to keep.
  const std::shared_ptr<Setting[]> settings(new Setting[static_cast<size_t>(rows)]);
  bench::add(
      {"settings",
       rows,
       {"SELECT Flags,GroupName,SettingID,PfaKey,CurrentValue,PendingValue,SuppressIf,GrayIf,GroupID,"
        "GroupSuppressIf,GroupGrayIf,Mriname,ShortDesc,FullDesc,Type,SettingName,Mininstances,Maxinstances,"
        "Defvalue,Mfg_default,Defaultaction,RecordId,Minim,Maxim,Step,Mins,Maxs,Pattern,Numchoices,Choices "
        "FROM PCISetting WHERE PfaKey=?"},
       [=](int) {
         unsigned short filled = 0;
         zymdb_get_pci_configSet_list(kBusyFunction, nullptr, static_cast<unsigned>(rows), settings.get(), 0,
                                      &filled);
         return is_list(filled, settings.get(), rows, is_last);
       },
       [=](Statements& raw, int) {
         Setting* end = settings.get();
         const auto read = [&](Columns row) {
           Setting& s = *end++;
           s.Flags = row.number();
           row.text(s.GroupName), row.text(s.SettingID);
           s.PfaKey = row.number();
           row.text(s.CurrentValue), row.text(s.PendingValue), row.text(s.SuppressIf), row.text(s.GrayIf);
           row.text(s.GroupID), row.text(s.GroupSuppressIf), row.text(s.GroupGrayIf), row.text(s.Mriname);
           row.text(s.ShortDesc), row.text(s.FullDesc);
           s.Type = row.number();
           row.text(s.SettingName);
           s.Mininstances = row.number(), s.Maxinstances = row.number();
           row.text(s.Defvalue), row.text(s.Mfg_default), row.text(s.Defaultaction), row.text(s.RecordId);
           s.Minim = row.number(), s.Maxim = row.number(), s.Step = row.number(), s.Mins = row.number();
           s.Maxs = row.number();
           row.text(s.Pattern);
           s.Numchoices = row.number();
           row.text(s.Choices);
         };
         raw.each(0, read, kBusyFunction);
         return is_list(static_cast<size_t>(end - settings.get()), settings.get(), rows, is_last);
       }});
}

// ---- Drives

constexpr char kSensorsSql[] =
    "SELECT SlotNo,HealthStatusId FROM SensorSlotMap WHERE HardwareTypeId IN (2,21,22)";
#define DRIVE_COLUMNS                                                                                       \
  "SELECT "                                                                                                 \
  "PCIFuncKey,SlotNo,CtrlType,BayNo,LocationId,Location,DriveTypeId,MediaTypeId,FruNo,PartNo,SerialNo,"     \
  "Model,UUID,Manufacture,FwVersion,Capacity,SFlags,Warning,Temperature,RemainLife,InfoMask FROM AimDisks " \
  "WHERE "
#define REPORTED_COLUMNS                                                                                  \
  "SELECT Location,SlotNo,CtrlSlot,CtrlType,ModelName,Manufacturer,SupplierSN,PartNo,FruNo,FwVer,SFlags," \
  "Warning,Temperature,RemainLife,Capacity,FormFactor FROM NVMeDrives WHERE "

// The health of sensors, of the drives in bays.
struct Sensors {
  uint8_t health[256];

  Sensors(Statements& raw, size_t place) {
    std::memset(health, 2, sizeof health);
    raw.each(place, [&](Columns row) {
      const uint8_t slot = row.number();
      health[slot] = row.number();
    });
  }
};

void read_drive(Columns row, const Sensors& sensors, _ZYMDB_AimDisk& drive) {
  static constexpr zymdb::CodeText kTypes[] = {{1, "SATA"}, {2, "SAS"}, {3, "NVMe"}};
  drive.PCIFuncKey = row.number(), drive.SlotNo = row.number(), drive.CtrlType = row.number();
  drive.BayNo = row.number(), drive.LocationId = row.number();
  row.text(drive.Location);
  drive.DriveTypeId = row.number_in_text();
  const int media = row.number_in_text();
  row.text(drive.FruNo), row.text(drive.PartNo), row.text(drive.SerialNo), row.text(drive.Model);
  row.text(drive.UUID), row.text(drive.Manufacture), row.text(drive.FwVersion), row.text(drive.Capacity);
  drive.SFlags = row.number(), drive.Warning = row.number(), drive.Temperature = row.number();
  drive.RemainLife = row.number(), drive.InfoMask = row.number();
  drive.FormFactor = ZYMDB_FORM_FACTOR_DRIVE_BAY;
  drive.HealthStatusId = sensors.health[drive.BayNo & 0xFF];
  copy_text(drive.DisplayType, zymdb::text_of(kTypes, drive.DriveTypeId));
  copy_text(drive.MediaType, media == 1 ? "SSD" : "HDD");
}

void read_reported_drive(Columns row, const Sensors& sensors, _ZYMDB_AimDisk& drive) {
  drive.LocationId = row.number(), drive.BayNo = row.number(), drive.SlotNo = row.number();
  drive.CtrlType = row.number();
  row.text(drive.Model), row.text(drive.Manufacture), row.text(drive.SerialNo), row.text(drive.PartNo);
  row.text(drive.FruNo), row.text(drive.FwVersion);
  drive.SFlags = row.number(), drive.Warning = row.number(), drive.Temperature = row.number();
  drive.RemainLife = row.number();
  const uint64_t capacity = row.number();
  std::snprintf(drive.Capacity, sizeof drive.Capacity, "%.2lfTB", static_cast<double>(capacity) / 1e12);
  drive.FormFactor = row.number().value == 0x11 ? ZYMDB_FORM_FACTOR_DRIVE_BAY : ZYMDB_FORM_FACTOR_UNKNOWN;
  const bool is_m2 = drive.LocationId == 3;
  drive.DriveTypeId = is_m2 ? 5 : 3;
  copy_text(drive.DisplayType, is_m2 ? "M.2 NVMe" : "NVMe");
  copy_text(drive.MediaType, "SSD");
  std::snprintf(drive.Location, sizeof drive.Location, is_m2 ? "M.2 Bay%d" : "Bay %d", drive.BayNo);
  drive.HealthStatusId = is_m2 ? 2 : sensors.health[drive.BayNo & 0xFF];
  drive.InfoMask = 0x0F, drive.Presence = 1;
}

bool is_last_drive(const _ZYMDB_AimDisk& drive) {
  return std::strcmp(drive.DisplayType, "SATA") == 0 && drive.FormFactor == ZYMDB_FORM_FACTOR_DRIVE_BAY;
}

void add_drives(int rows) {
  bench::add({"drives",
              rows,
              {kSensorsSql, DRIVE_COLUMNS "Presence=?"},
              [=](int) {
                _ZYMDB_AimDisk_List list{};
                zymdb_get_disk_list(&list);
                const bool is_right = is_list(list.count, list.disks, rows, is_last_drive);
                std::free(list.disks);
                return is_right;
              },
              [=](Statements& raw, int) {
                const Sensors sensors(raw, 0);
                GrowingArray<_ZYMDB_AimDisk> drives;
                raw.each(
                    1, [&](Columns row) { read_drive(row, sensors, drives.add_zeroed()); }, 1);
                return is_list(drives.count(), drives.begin(), rows, is_last_drive);
              }});
}

// A quarter of the rows on M.2 carriers, a quarter reported in bays, and all the SATA drives.
void add_merged_drives(int rows) {
  const int quarter = (rows + 2) / 4;
  const int in_bays = rows / 4;
  const auto is_merged = [=](size_t count, const _ZYMDB_AimDisk* drives) {
    return is_list(count, drives, quarter + in_bays + rows, is_last_drive) && drives[0].DriveTypeId == 5 &&
           drives[quarter].DriveTypeId == 3 && drives[quarter + 1].PCIFuncKey == 7u << 16;
  };
  bench::add({"merged drives",
              rows,
              {kSensorsSql, REPORTED_COLUMNS "Location=?", DRIVE_COLUMNS "LocationId=?",
               REPORTED_COLUMNS "CtrlType=? AND (Location=? OR Location=?)",
               DRIVE_COLUMNS "CtrlType=? AND DriveTypeId=? AND ((LocationId=?) OR (LocationId=?))",
               "SELECT SegNo,BusNo,DeviceNo,FunctionNo FROM PCIs WHERE Location=? AND SlotNo=? AND ClsCode=?",
               DRIVE_COLUMNS "Presence=? AND DriveTypeId=?"},
              [=](int) {
                _ZYMDB_AimDisk_List list{};
                zymdb_get_merged_disk_list(&list);
                const bool is_right = is_merged(list.count, list.disks);
                std::free(list.disks);
                return is_right;
              },
              [=](Statements& raw, int) {
                const Sensors sensors(raw, 0);
                GrowingArray<_ZYMDB_AimDisk> drives;
                const auto read = [&](Columns row) { read_drive(row, sensors, drives.add_zeroed()); };
                const auto read_reported = [&](Columns row) {
                  read_reported_drive(row, sensors, drives.add_zeroed());
                };
                raw.each(1, read_reported, 3);
                raw.each(2, read, 4);
                const size_t first = drives.count();
                raw.each(3, read_reported, 0, 1, 2);
                raw.each(4, read, 0, 3, 1, 2);
                // Looked up drive by drive once their lists are read, as the operation does.
                for (_ZYMDB_AimDisk& drive : std::span(drives.begin(), drives.count()).subspan(first)) {
                  const auto read_address = [&](Columns place) {
                    drive.PCIFuncKey = 0;
                    for (int part = 0; part < 4; ++part)
                      drive.PCIFuncKey = drive.PCIFuncKey << 8 | static_cast<uint8_t>(place.number());
                  };
                  raw.one(5, read_address, 2, drive.BayNo, 0x010802);
                }
                raw.each(6, read, 1, 1);
                return is_merged(drives.count(), drives.begin());
              }});
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  // Arrays of megabytes, freed, stay at hand for either side. Left alone, the allocator gives them back to
  // the system or not, by what came before, and new pages cost as much as what is measured.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  // The drive lists write a line of information for each drive, which no comparator does.
  setlogmask(LOG_UPTO(LOG_NOTICE));
  for (const auto add : {add_adapters, add_functions, add_physical_ports, add_logical_ports, add_firmware,
                         add_pldm_firmware, add_settings, add_drives, add_merged_drives})
    for (const int rows : kSizes) add(rows);
  benchmark::RunSpecifiedBenchmarks();
}
