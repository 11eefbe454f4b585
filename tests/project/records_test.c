/* The records' layout, as C callers see it: every size and offset where pointers are 64 bits wide. */
#include <assert.h>
#include <stddef.h>

#include "zymdb_cpu_mem.h"
#include "zymdb_db.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_storage.h"

#define SIZE(RECORD, BYTES) static_assert(sizeof(RECORD) == (BYTES), #RECORD)
#define AT(RECORD, FIELD, OFFSET) static_assert(offsetof(RECORD, FIELD) == (OFFSET), #RECORD "." #FIELD)

#if UINTPTR_MAX == UINT64_MAX

SIZE(_zym_db_param_t, 24);
AT(_zym_db_param_t, type, 0);
AT(_zym_db_param_t, reserved, 4);
AT(_zym_db_param_t, flag, 8);
AT(_zym_db_param_t, value, 16);

SIZE(_ZYMDB_Processor_List, 16);
AT(_ZYMDB_Processor_List, count, 0);
AT(_ZYMDB_Processor_List, ids, 8);

SIZE(_ZYMDB_Processor, 456);
AT(_ZYMDB_Processor, _id, 0);
AT(_ZYMDB_Processor, ProcId, 8);
AT(_ZYMDB_Processor, ProcType, 16);
AT(_ZYMDB_Processor, Family, 18);
AT(_ZYMDB_Processor, Socket, 20);
AT(_ZYMDB_Processor, Manufacturer, 85);
AT(_ZYMDB_Processor, Version, 150);
AT(_ZYMDB_Processor, Voltage, 215);
AT(_ZYMDB_Processor, ExtClock, 216);
AT(_ZYMDB_Processor, MaxSpeed, 218);
AT(_ZYMDB_Processor, CurSpeed, 220);
AT(_ZYMDB_Processor, Status, 222);
AT(_ZYMDB_Processor, Upgrade, 223);
AT(_ZYMDB_Processor, SerialNo, 224);
AT(_ZYMDB_Processor, AssetTag, 289);
AT(_ZYMDB_Processor, PartNo, 354);
AT(_ZYMDB_Processor, CoreCount, 419);
AT(_ZYMDB_Processor, CoreEnabled, 420);
AT(_ZYMDB_Processor, ThreadCount, 421);
AT(_ZYMDB_Processor, Characteristics, 422);
AT(_ZYMDB_Processor, L1CacheMaxSize, 424);
AT(_ZYMDB_Processor, L1CacheInstalled, 426);
AT(_ZYMDB_Processor, L1CacheType, 428);
AT(_ZYMDB_Processor, L1CacheConfig, 430);
AT(_ZYMDB_Processor, L2CacheMaxSize, 432);
AT(_ZYMDB_Processor, L2CacheInstalled, 434);
AT(_ZYMDB_Processor, L2CacheType, 436);
AT(_ZYMDB_Processor, L2CacheConfig, 438);
AT(_ZYMDB_Processor, L3CacheMaxSize, 440);
AT(_ZYMDB_Processor, L3CacheInstalled, 442);
AT(_ZYMDB_Processor, L3CacheType, 444);
AT(_ZYMDB_Processor, L3CacheConfig, 446);
AT(_ZYMDB_Processor, NodeIndex, 448);

SIZE(_ZYMDB_PCI_FunKey_List, 16);
AT(_ZYMDB_PCI_FunKey_List, count, 0);
AT(_ZYMDB_PCI_FunKey_List, keys, 8);

SIZE(_ZYMDB_PCI_Key_List, 16);
AT(_ZYMDB_PCI_Key_List, count, 0);
AT(_ZYMDB_PCI_Key_List, keys, 8);

SIZE(_ZYMDB_PCI_Generic, 108);
AT(_ZYMDB_PCI_Generic, _id, 0);
AT(_ZYMDB_PCI_Generic, BridgeId, 4);
AT(_ZYMDB_PCI_Generic, SegNo, 8);
AT(_ZYMDB_PCI_Generic, BusNo, 9);
AT(_ZYMDB_PCI_Generic, DeviceNo, 10);
AT(_ZYMDB_PCI_Generic, FunctionNo, 11);
AT(_ZYMDB_PCI_Generic, VendorId, 12);
AT(_ZYMDB_PCI_Generic, DeviceId, 14);
AT(_ZYMDB_PCI_Generic, ClsCode, 16);
AT(_ZYMDB_PCI_Generic, RevId, 20);
AT(_ZYMDB_PCI_Generic, SubVendorId, 22);
AT(_ZYMDB_PCI_Generic, SubDeviceId, 24);
AT(_ZYMDB_PCI_Generic, SlotNo, 26);
AT(_ZYMDB_PCI_Generic, Location, 28);
AT(_ZYMDB_PCI_Generic, SlotDesignation, 29);
AT(_ZYMDB_PCI_Generic, SlotType, 94);
AT(_ZYMDB_PCI_Generic, SlotDataBusWidth, 95);
AT(_ZYMDB_PCI_Generic, Hotplug, 96);
AT(_ZYMDB_PCI_Generic, PCIType, 97);
AT(_ZYMDB_PCI_Generic, BladeSlotPort, 98);
AT(_ZYMDB_PCI_Generic, NodeIndex, 99);
AT(_ZYMDB_PCI_Generic, FunType, 100);
AT(_ZYMDB_PCI_Generic, LanesInUse, 104);
AT(_ZYMDB_PCI_Generic, MaxLanes, 105);
AT(_ZYMDB_PCI_Generic, MaxPCIeType, 106);
AT(_ZYMDB_PCI_Generic, PCIeType, 107);

SIZE(_ZYMDB_PCI_Generic_List, 16);
AT(_ZYMDB_PCI_Generic_List, count, 0);
AT(_ZYMDB_PCI_Generic_List, items, 8);

SIZE(_ZYMDB_PCI_Misc, 210);
AT(_ZYMDB_PCI_Misc, MaxDataWidth, 0);
AT(_ZYMDB_PCI_Misc, ConnectorType, 2);
AT(_ZYMDB_PCI_Misc, PackageType, 4);
AT(_ZYMDB_PCI_Misc, ConnectorTypeName, 6);
AT(_ZYMDB_PCI_Misc, PackageTypeName, 71);
AT(_ZYMDB_PCI_Misc, OtherPackageType, 136);
AT(_ZYMDB_PCI_Misc, AIMSpecVersion, 201);

SIZE(_ZYMDB_PCI_VPD, 279);
AT(_ZYMDB_PCI_VPD, UUID, 0);
AT(_ZYMDB_PCI_VPD, ProductName, 33);
AT(_ZYMDB_PCI_VPD, Manufacture, 162);
AT(_ZYMDB_PCI_VPD, SerialNo, 195);
AT(_ZYMDB_PCI_VPD, PartNo, 212);
AT(_ZYMDB_PCI_VPD, Model, 229);
AT(_ZYMDB_PCI_VPD, FRUNo, 262);

SIZE(_ZYMDB_PCI_Adapter, 212);
AT(_ZYMDB_PCI_Adapter, PCIKey, 0);
AT(_ZYMDB_PCI_Adapter, NodeNo, 4);
AT(_ZYMDB_PCI_Adapter, SlotNo, 6);
AT(_ZYMDB_PCI_Adapter, ConnectorType, 8);
AT(_ZYMDB_PCI_Adapter, ConnectorTypeName, 10);
AT(_ZYMDB_PCI_Adapter, CardName, 75);
AT(_ZYMDB_PCI_Adapter, AIMSupported, 204);
AT(_ZYMDB_PCI_Adapter, Location, 205);
AT(_ZYMDB_PCI_Adapter, HealthStatus, 206);
AT(_ZYMDB_PCI_Adapter, NcsiIdValid, 207);
AT(_ZYMDB_PCI_Adapter, PackageID1, 208);
AT(_ZYMDB_PCI_Adapter, PackageID2, 209);

SIZE(_ZYMDB_PCI_Adapter_List, 16);
AT(_ZYMDB_PCI_Adapter_List, count, 0);
AT(_ZYMDB_PCI_Adapter_List, adapters, 8);

SIZE(_ZYMDB_NCSIPackageID, 6);
AT(_ZYMDB_NCSIPackageID, SlotNo, 0);
AT(_ZYMDB_NCSIPackageID, Location, 2);
AT(_ZYMDB_NCSIPackageID, PackageID1, 3);
AT(_ZYMDB_NCSIPackageID, PackageID2, 4);

SIZE(_ZYMDB_NCSIPackageID_List, 16);
AT(_ZYMDB_NCSIPackageID_List, count, 0);
AT(_ZYMDB_NCSIPackageID_List, entries, 8);

SIZE(_ZYMDB_PCI_Network_Info, 4);
AT(_ZYMDB_PCI_Network_Info, NumberofPhysicalPorts, 0);
AT(_ZYMDB_PCI_Network_Info, MaxNumberofLogicalPorts, 2);

SIZE(_ZYMDB_PCI_LogicalPort, 528);
AT(_ZYMDB_PCI_LogicalPort, MaxDataSize, 0);
AT(_ZYMDB_PCI_LogicalPort, PermanentAddress, 4);
AT(_ZYMDB_PCI_LogicalPort, NetworkAddresses, 69);
AT(_ZYMDB_PCI_LogicalPort, PhyIdx, 134);
AT(_ZYMDB_PCI_LogicalPort, Idx, 136);
AT(_ZYMDB_PCI_LogicalPort, LinkTechnology, 138);
AT(_ZYMDB_PCI_LogicalPort, vNICMode, 140);
AT(_ZYMDB_PCI_LogicalPort, MaxSpeed, 144);
AT(_ZYMDB_PCI_LogicalPort, ProtocolType, 152);
AT(_ZYMDB_PCI_LogicalPort, Ethernet, 154);
AT(_ZYMDB_PCI_LogicalPort, FCoEFC, 155);
AT(_ZYMDB_PCI_LogicalPort, iSCSI, 156);
AT(_ZYMDB_PCI_LogicalPort, FCoEPermanentAddress, 157);
AT(_ZYMDB_PCI_LogicalPort, FCoENetworkAddressess, 174);
AT(_ZYMDB_PCI_LogicalPort, ConnectionType, 192);
AT(_ZYMDB_PCI_LogicalPort, Role, 194);
AT(_ZYMDB_PCI_LogicalPort, TargetRelativePortNumber, 196);
AT(_ZYMDB_PCI_LogicalPort, LinkTechnologyName, 200);
AT(_ZYMDB_PCI_LogicalPort, vNICModeName, 265);
AT(_ZYMDB_PCI_LogicalPort, ProtocolTypeName, 330);
AT(_ZYMDB_PCI_LogicalPort, ConnectionTypeName, 395);
AT(_ZYMDB_PCI_LogicalPort, RoleName, 460);

SIZE(_ZYMDB_PCI_LogicalPort_List, 16);
AT(_ZYMDB_PCI_LogicalPort_List, count, 0);
AT(_ZYMDB_PCI_LogicalPort_List, ports, 8);

SIZE(_ZYMDB_PCI_PhysicalPort, 152);
AT(_ZYMDB_PCI_PhysicalPort, ConnectorLayout, 0);
AT(_ZYMDB_PCI_PhysicalPort, Idx, 2);
AT(_ZYMDB_PCI_PhysicalPort, NumberofLogicalPorts, 4);
AT(_ZYMDB_PCI_PhysicalPort, PermanentAddress, 6);
AT(_ZYMDB_PCI_PhysicalPort, ConnectorLayoutName, 71);
AT(_ZYMDB_PCI_PhysicalPort, LinkStatus, 136);
AT(_ZYMDB_PCI_PhysicalPort, LinkSpeed, 140);
AT(_ZYMDB_PCI_PhysicalPort, TxUtil, 144);
AT(_ZYMDB_PCI_PhysicalPort, RxUtil, 148);

SIZE(_ZYMDB_PCI_PhysicalPort_List, 16);
AT(_ZYMDB_PCI_PhysicalPort_List, count, 0);
AT(_ZYMDB_PCI_PhysicalPort_List, ports, 8);

SIZE(_ZYMDB_PCI_PortLinkState, 20);
AT(_ZYMDB_PCI_PortLinkState, LinkStatus, 0);
AT(_ZYMDB_PCI_PortLinkState, LinkSpeed, 4);
AT(_ZYMDB_PCI_PortLinkState, TxUtil, 8);
AT(_ZYMDB_PCI_PortLinkState, RxUtil, 12);
AT(_ZYMDB_PCI_PortLinkState, Idx, 16);

SIZE(_ZYMDB_Memory_List, 16);
AT(_ZYMDB_Memory_List, count, 0);
AT(_ZYMDB_Memory_List, ids, 8);

SIZE(_ZYMDB_Memory, 656);
AT(_ZYMDB_Memory, _id, 0);
AT(_ZYMDB_Memory, ArrayId, 4);
AT(_ZYMDB_Memory, SlotNo, 8);
AT(_ZYMDB_Memory, TotalWidth, 10);
AT(_ZYMDB_Memory, DataWidth, 12);
AT(_ZYMDB_Memory, MemSize, 16);
AT(_ZYMDB_Memory, FormFactor, 20);
AT(_ZYMDB_Memory, MemType, 21);
AT(_ZYMDB_Memory, TypeDetail, 22);
AT(_ZYMDB_Memory, MaxSpeed, 24);
AT(_ZYMDB_Memory, ClockSpeed, 26);
AT(_ZYMDB_Memory, DevLocator, 28);
AT(_ZYMDB_Memory, BankLocator, 93);
AT(_ZYMDB_Memory, Manufacturer, 158);
AT(_ZYMDB_Memory, SerialNo, 223);
AT(_ZYMDB_Memory, AssetTag, 288);
AT(_ZYMDB_Memory, PartNo, 353);
AT(_ZYMDB_Memory, Attributes, 418);
AT(_ZYMDB_Memory, NodeIndex, 419);
AT(_ZYMDB_Memory, Capacity, 424);
AT(_ZYMDB_Memory, MemCapacity, 432);
AT(_ZYMDB_Memory, AppDirCap, 440);
AT(_ZYMDB_Memory, UnconfigCap, 448);
AT(_ZYMDB_Memory, InaccCap, 456);
AT(_ZYMDB_Memory, ReservedCap, 464);
AT(_ZYMDB_Memory, Classification, 472);
AT(_ZYMDB_Memory, RemainingLife, 476);
AT(_ZYMDB_Memory, SecurityState, 480);
AT(_ZYMDB_Memory, HealthStatus, 484);
AT(_ZYMDB_Memory, AlarmTrips, 485);
AT(_ZYMDB_Memory, LDShutdownCount, 488);
AT(_ZYMDB_Memory, AITDRAMStatus, 492);
AT(_ZYMDB_Memory, HealthStatusReason, 494);
AT(_ZYMDB_Memory, LLShutdownStatus, 496);
AT(_ZYMDB_Memory, InfoMask, 497);
AT(_ZYMDB_Memory, CPUIndex, 500);
AT(_ZYMDB_Memory, iMCNum, 504);
AT(_ZYMDB_Memory, ChannelNum, 508);
AT(_ZYMDB_Memory, DimmNum, 512);
AT(_ZYMDB_Memory, FirmwareVersion, 516);
AT(_ZYMDB_Memory, SoftwareID, 581);
AT(_ZYMDB_Memory, MajorHealth, 646);
AT(_ZYMDB_Memory, MinorHealth, 647);
AT(_ZYMDB_Memory, RepairStatus, 648);

SIZE(_ZYMDB_HC_Card, 226);
AT(_ZYMDB_HC_Card, VendorId, 0);
AT(_ZYMDB_HC_Card, DeviceId, 2);
AT(_ZYMDB_HC_Card, SubVendorId, 4);
AT(_ZYMDB_HC_Card, SubDeviceId, 6);
AT(_ZYMDB_HC_Card, CardName, 8);
AT(_ZYMDB_HC_Card, Info, 136);
AT(_ZYMDB_HC_Card, Manufacture, 160);
AT(_ZYMDB_HC_Card, BoardPower, 224);

SIZE(_ZYMDB_GPU_Device, 84);
AT(_ZYMDB_GPU_Device, VideoMemoryType, 0);
AT(_ZYMDB_GPU_Device, VideoMemoryTypeName, 1);
AT(_ZYMDB_GPU_Device, VideoMemorySize, 66);
AT(_ZYMDB_GPU_Device, TotalGPUChipNumber, 83);

SIZE(_ZYMDB_GPU_Chip, 248);
AT(_ZYMDB_GPU_Chip, GPUChipName, 0);
AT(_ZYMDB_GPU_Chip, GPUChipManufacturer, 33);
AT(_ZYMDB_GPU_Chip, GPUChipModel, 50);
AT(_ZYMDB_GPU_Chip, GPUChipPartNumber, 67);
AT(_ZYMDB_GPU_Chip, GPUChipSKU, 84);
AT(_ZYMDB_GPU_Chip, GPUChipSerialNumber, 101);
AT(_ZYMDB_GPU_Chip, GPUChipFamily, 118);
AT(_ZYMDB_GPU_Chip, GPUChipUniqueID, 151);
AT(_ZYMDB_GPU_Chip, GPUChipFormFactorName, 168);
AT(_ZYMDB_GPU_Chip, GPUChipFormFactor, 233);
AT(_ZYMDB_GPU_Chip, GPUChipIndex, 234);
AT(_ZYMDB_GPU_Chip, GPUChipNumberOfEnabledCores, 235);
AT(_ZYMDB_GPU_Chip, ExternalBusClockSpeed, 236);
AT(_ZYMDB_GPU_Chip, GPUChipMaxClockSpeed, 240);
AT(_ZYMDB_GPU_Chip, GPUChipAddressWidth, 244);
AT(_ZYMDB_GPU_Chip, GPUChipDataWidth, 246);

SIZE(_ZYMDB_GPU_Chip_List, 16);
AT(_ZYMDB_GPU_Chip_List, count, 0);
AT(_ZYMDB_GPU_Chip_List, items, 8);

SIZE(_ZYMDB_PCI_Firmware, 330);
AT(_ZYMDB_PCI_Firmware, FirmwareName, 0);
AT(_ZYMDB_PCI_Firmware, VersionString, 33);
AT(_ZYMDB_PCI_Firmware, Description, 66);
AT(_ZYMDB_PCI_Firmware, ReleaseDate, 195);
AT(_ZYMDB_PCI_Firmware, Classification, 212);
AT(_ZYMDB_PCI_Firmware, ClassificationString, 214);
AT(_ZYMDB_PCI_Firmware, Manufacture, 279);
AT(_ZYMDB_PCI_Firmware, SoftwareID, 312);

SIZE(_ZYMDB_PCI_Firmware_List, 16);
AT(_ZYMDB_PCI_Firmware_List, Count, 0);
AT(_ZYMDB_PCI_Firmware_List, Firmwares, 8);

SIZE(_ZYMDB_PLDM_Firmware, 464);
AT(_ZYMDB_PLDM_Firmware, DeviceName, 0);
AT(_ZYMDB_PLDM_Firmware, DeviceType, 132);
AT(_ZYMDB_PLDM_Firmware, PCIKey, 136);
AT(_ZYMDB_PLDM_Firmware, PCIFuncKey, 140);
AT(_ZYMDB_PLDM_Firmware, Location, 144);
AT(_ZYMDB_PLDM_Firmware, SlotNo, 146);
AT(_ZYMDB_PLDM_Firmware, Manufacture, 148);
AT(_ZYMDB_PLDM_Firmware, SoftwareID, 181);
AT(_ZYMDB_PLDM_Firmware, VersionString, 190);
AT(_ZYMDB_PLDM_Firmware, PendingVersionString, 223);
AT(_ZYMDB_PLDM_Firmware, PkgVersionString, 256);
AT(_ZYMDB_PLDM_Firmware, ReleaseDate, 289);
AT(_ZYMDB_PLDM_Firmware, PendingReleaseDate, 306);
AT(_ZYMDB_PLDM_Firmware, UpdateSupport, 323);
AT(_ZYMDB_PLDM_Firmware, Updated, 324);
AT(_ZYMDB_PLDM_Firmware, UpdateMethod, 326);
AT(_ZYMDB_PLDM_Firmware, UpdateAuxInfo, 328);
AT(_ZYMDB_PLDM_Firmware, UpdateErrCode, 329);
AT(_ZYMDB_PLDM_Firmware, UpdateErrString, 330);
AT(_ZYMDB_PLDM_Firmware, Status, 460);

SIZE(_ZYMDB_PLDM_Firmware_List, 16);
AT(_ZYMDB_PLDM_Firmware_List, Count, 0);
AT(_ZYMDB_PLDM_Firmware_List, Firmwares, 8);

SIZE(_ZYMDB_Embedded_Firmware, 156);
AT(_ZYMDB_Embedded_Firmware, DeviceName, 0);
AT(_ZYMDB_Embedded_Firmware, DeviceIndex, 129);
AT(_ZYMDB_Embedded_Firmware, StructRev, 130);
AT(_ZYMDB_Embedded_Firmware, Version, 131);
AT(_ZYMDB_Embedded_Firmware, SoftwareID, 132);
AT(_ZYMDB_Embedded_Firmware, Class, 150);
AT(_ZYMDB_Embedded_Firmware, Category, 152);
AT(_ZYMDB_Embedded_Firmware, SubCategory, 153);
AT(_ZYMDB_Embedded_Firmware, Checksum, 154);

SIZE(_ZYMDB_Embedded_Firmware_List, 16);
AT(_ZYMDB_Embedded_Firmware_List, Count, 0);
AT(_ZYMDB_Embedded_Firmware_List, Firmwares, 8);

SIZE(_ZYMDB_DPU_Event, 296);
AT(_ZYMDB_DPU_Event, Id, 0);
AT(_ZYMDB_DPU_Event, Timestamp, 4);
AT(_ZYMDB_DPU_Event, GenID, 8);
AT(_ZYMDB_DPU_Event, Message, 40);

SIZE(_ZYMDB_DPU_Event_List, 16);
AT(_ZYMDB_DPU_Event_List, Count, 0);
AT(_ZYMDB_DPU_Event_List, Events, 8);

SIZE(_ZYMDB_Retimer_Update_Req, 140);
AT(_ZYMDB_Retimer_Update_Req, Data, 0);
AT(_ZYMDB_Retimer_Update_Req, Param1, 128);
AT(_ZYMDB_Retimer_Update_Req, Param2, 132);
AT(_ZYMDB_Retimer_Update_Req, Byte1, 136);
AT(_ZYMDB_Retimer_Update_Req, Byte2, 137);
AT(_ZYMDB_Retimer_Update_Req, Byte3, 138);

SIZE(_ZYMDB_Retimer_Progress, 8);
AT(_ZYMDB_Retimer_Progress, Stage, 0);
AT(_ZYMDB_Retimer_Progress, Progress, 4);
SIZE(_ZYMDB_AimDisk, 360);
AT(_ZYMDB_AimDisk, PCIFuncKey, 0);
AT(_ZYMDB_AimDisk, SlotNo, 4);
AT(_ZYMDB_AimDisk, CtrlType, 6);
AT(_ZYMDB_AimDisk, BayNo, 8);
AT(_ZYMDB_AimDisk, LocationId, 10);
AT(_ZYMDB_AimDisk, DriveTypeId, 11);
AT(_ZYMDB_AimDisk, Presence, 12);
AT(_ZYMDB_AimDisk, FormFactor, 16);
AT(_ZYMDB_AimDisk, HealthStatusId, 20);
AT(_ZYMDB_AimDisk, Location, 21);
AT(_ZYMDB_AimDisk, DisplayType, 38);
AT(_ZYMDB_AimDisk, MediaType, 55);
AT(_ZYMDB_AimDisk, MediaValue, 72);
AT(_ZYMDB_AimDisk, FruNo, 74);
AT(_ZYMDB_AimDisk, PartNo, 107);
AT(_ZYMDB_AimDisk, SerialNo, 140);
AT(_ZYMDB_AimDisk, Model, 173);
AT(_ZYMDB_AimDisk, UUID, 238);
AT(_ZYMDB_AimDisk, Manufacture, 303);
AT(_ZYMDB_AimDisk, FwVersion, 320);
AT(_ZYMDB_AimDisk, Capacity, 337);
AT(_ZYMDB_AimDisk, SFlags, 354);
AT(_ZYMDB_AimDisk, Warning, 355);
AT(_ZYMDB_AimDisk, Temperature, 356);
AT(_ZYMDB_AimDisk, RemainLife, 357);
AT(_ZYMDB_AimDisk, InfoMask, 358);

SIZE(_ZYMDB_AimDisk_List, 16);
AT(_ZYMDB_AimDisk_List, count, 0);
AT(_ZYMDB_AimDisk_List, disks, 8);

#endif

/* Byte-packed: the same with every pointer width. */

SIZE(ZYMDB_PCI_Config_Setting, 7231);
AT(ZYMDB_PCI_Config_Setting, SettingID, 0);
AT(ZYMDB_PCI_Config_Setting, SettingName, 129);
AT(ZYMDB_PCI_Config_Setting, PfaKey, 194);
AT(ZYMDB_PCI_Config_Setting, CurrentValue, 198);
AT(ZYMDB_PCI_Config_Setting, PendingValue, 455);
AT(ZYMDB_PCI_Config_Setting, SuppressIf, 712);
AT(ZYMDB_PCI_Config_Setting, GrayIf, 1737);
AT(ZYMDB_PCI_Config_Setting, GroupID, 2762);
AT(ZYMDB_PCI_Config_Setting, GroupName, 3019);
AT(ZYMDB_PCI_Config_Setting, GroupSuppressIf, 3276);
AT(ZYMDB_PCI_Config_Setting, GroupGrayIf, 4301);
AT(ZYMDB_PCI_Config_Setting, Mriname, 5326);
AT(ZYMDB_PCI_Config_Setting, ShortDesc, 5391);
AT(ZYMDB_PCI_Config_Setting, FullDesc, 5520);
AT(ZYMDB_PCI_Config_Setting, Type, 5777);
AT(ZYMDB_PCI_Config_Setting, Flags, 5781);
AT(ZYMDB_PCI_Config_Setting, Mininstances, 5785);
AT(ZYMDB_PCI_Config_Setting, Maxinstances, 5789);
AT(ZYMDB_PCI_Config_Setting, Defvalue, 5793);
AT(ZYMDB_PCI_Config_Setting, Mfg_default, 5858);
AT(ZYMDB_PCI_Config_Setting, Defaultaction, 5923);
AT(ZYMDB_PCI_Config_Setting, RecordId, 5988);
AT(ZYMDB_PCI_Config_Setting, Minim, 6053);
AT(ZYMDB_PCI_Config_Setting, Maxim, 6057);
AT(ZYMDB_PCI_Config_Setting, Step, 6061);
AT(ZYMDB_PCI_Config_Setting, Mins, 6065);
AT(ZYMDB_PCI_Config_Setting, Maxs, 6069);
AT(ZYMDB_PCI_Config_Setting, Pattern, 6073);
AT(ZYMDB_PCI_Config_Setting, Numchoices, 6202);
AT(ZYMDB_PCI_Config_Setting, Choices, 6206);

SIZE(ZYMDB_PCI_Config_Set, 134);
AT(ZYMDB_PCI_Config_Set, SettingID, 0);
AT(ZYMDB_PCI_Config_Set, PendingValue, 65);
AT(ZYMDB_PCI_Config_Set, Result, 130);

int main(void) {
  return 0;
}
