#include "inventory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>

#include "controller/database_client.h"
#include "raw_sqlite.h"

namespace bench {
namespace {

// What each statement takes its rows from: i counts from 0.
constexpr char kRows[] =
    "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i+1<?1), f(k) AS "
    "(VALUES(0),(1),(2),(3)) ";

// ?1 is the number of rows, ?2 the key of the busy function. Texts are of the lengths that servers report.
constexpr const char* kFill[] = {
    "INSERT INTO PCIs "
    "(FunKey,DevKey,HardwareId,HardwareTypeId,BridgeId,SegNo,BusNo,DeviceNo,FunctionNo,VendorId,"
    "DeviceId,RevId,ClsCode,SubVendorId,SubDeviceId,SlotNo,Location,SlotDesignation,SlotType,"
    "SlotDataBusWidth,"
    "Hotplug,PCIType,BladeSlotPort,NodeIndex,FunType,LanesInUse,MaxLanes,MaxPCIeType,PCIeType) "
    "SELECT i<<8,65536+i,i<<8,3,1,0,i&255,0,0,0x15B3,0x1017,0,iif(i%4=3,0x010802,0x020000),0x15B3,8,"
    "iif(i%4=3,i/4,i),iif(i%4=3,2,1),'PCIe Slot',0xB6,13,0,2,0,0,2,8,16,3,3 FROM n",
    "INSERT INTO PCIs (FunKey,DevKey,HardwareId,HardwareTypeId,Location,VendorId) VALUES "
    "(?2,?2,?2,3,9,0x15B3)",
    "INSERT INTO PCIAdapter "
    "(PCIKey,PCIFuncKey,NodeNo,SegNo,BusNo,DeviceNo,FunctionNo,Location,SlotNo,CardName,"
    "ConnectorType,AIMSupported,HealthStatus) SELECT 65536+i,(i<<8)|k,0,0,i&255,0,k,1,i,"
    "'a dual-port network adapter with a name of usual length','0xB6',0,1 FROM n,f",
    "INSERT INTO NCSIPackageID (Location,SlotNo,Type,PackageID1,PackageID2) SELECT 1,i,1,i,255 FROM n WHERE "
    "i<8",
    "INSERT INTO VPDs (HardwareId,HardwareTypeId,UUID,ProductName,Manufacture,SerialNo,PartNo,Model,FRUNo) "
    "SELECT i<<8,3,printf('%032x',i),'a dual-port network adapter','Vendor',printf('S%07d',i),'SN37A00001',"
    "'CX-5','01PG001' FROM n",
    "INSERT INTO Processor SELECT i+1,0xBFEBFBFF00050654+i,3,179,'CPU '||i,'Vendor Corporation',"
    "'Processor Gold 6142 CPU @ "
    "2.60GHz',0x90,100,4000,2600,65,50,printf('S%07d',i),'UNKNOWN','PN-6142',16,16,32,"
    "252,1024,1024,5,896,16384,16384,5,897,22528,22528,5,898,0 FROM n",
    "INSERT INTO Memory SELECT i+1,4096,i,72,64,32768,9,26,128,2933,2666,'DIMM '||i,'NODE 0 CHANNEL '||(i%6),"
    "'Vendor',printf('S%07d',i),'UNKNOWN','M393A4K40CB2-CVF',2,0,34359738368,0,0,0,0,0,1,100,0,1,0,0,0,0,0,"
    "255,"
    "i%2,i%4,i%6,i%2,'01.02.03','0001',1,1,0 FROM n",
    "INSERT INTO PCINetwork (PCIKey,PCIFuncKey,NumberofPhysicalPorts,MaxNumberofLogicalPorts) VALUES "
    "(?2,?2,?1,?1)",
    "INSERT INTO PCIPhysicalPort (PCIFuncKey,Idx,ConnectorLayout,NumberofLogicalPorts,PermanentAddress) "
    "SELECT ?2,i,'0x8007',1,printf('00:10:18:%02x:%02x:%02x',i>>16,i>>8&255,i&255) FROM n",
    "INSERT INTO PCIPhysicalPortStat (PCIFuncKey,Idx,LinkStatus,LinkSpeed,TxUtil,RxUtil) "
    "SELECT ?2,i,1,25000,i%100,i%100 FROM n",
    "INSERT INTO PCIPhysicalPortStat (PCIFuncKey,Idx,LinkStatus,LinkSpeed,TxUtil,RxUtil) "
    "SELECT i<<8,0,1,25000,i%100,i%100 FROM n",
    "INSERT INTO PCILogicalPort (PCIKey,PCIFuncKey,PhyIdx,Idx,MaxDataSize,PermanentAddress,NetworkAddresses,"
    "LinkTechnology,vNICMode,MaxSpeed,ProtocolType,Ethernet,FCoEFC,iSCSI,ConnectionType,Role,"
    "TargetRelativePortNumber) SELECT ?2,?2,i,0,9000,printf('001018%06x',i),printf('001018%06x',i),'2','0',"
    "25000000000,6,1,0,0,'7','2',i FROM n",
    "INSERT INTO Firmwares (HardwareId,HardwareTypeId,FirmwareName,VersionString,Description,ReleaseDate,"
    "Manufacture,Classification,SoftwareID) SELECT ?2,3,'Component '||i,'16.26.1040','firmware of the "
    "adapter',"
    "'2020-01-04','Vendor',0x8003,printf('15B3%04X',i) FROM n",
    "INSERT INTO PldmDeviceFirmware (DeviceName,DeviceType,PCIKey,PCIFuncKey,VendorId,DeviceId,SubVendorId,"
    "SubDeviceId,Location,SlotNo,Manufacture,SoftwareID,VersionString,PendingVersionString,PkgVersionString,"
    "ReleaseDate,PendingReleaseDate,UpdateSupport,UpdateMethod,UpdateAuxInfo,Updated,UpdateErrCode,"
    "UpdateErrString,Status) SELECT 'a dual-port network adapter',2,65536+i,i<<8,0x15B3,0x1017,0x15B3,8,1,i,"
    "'Vendor',printf('%08X',i),'16.26.1040','16.27.1016','1.2.3','2020-01-04','2020-03-04',1,2,0,0,0,'',0 "
    "FROM n",
    "INSERT INTO SensorSlotMap (HardwareTypeId,SlotNo,HealthStatusId) SELECT 2,i,1 FROM n WHERE i<24",
    "INSERT INTO AimDisks "
    "(PCIFuncKey,SlotNo,CtrlType,BayNo,LocationId,Location,Presence,DriveTypeId,MediaTypeId,"
    "FruNo,PartNo,SerialNo,Model,UUID,Manufacture,FwVersion,Capacity,SFlags,Warning,Temperature,RemainLife,"
    "InfoMask) SELECT 0,255,0,i%250,2,'Bay '||(i%250),1,1,1,printf('S%07d',i),'SSS7A00001',printf('S%07d',i),"
    "'VENDOR MZ7LH480HAHQ-000V3',printf('%032x',i),'Vendor','MXC7','480GB',0,0,30,99,15 FROM n",
    "INSERT INTO NVMeDrives "
    "(Location,SlotNo,CtrlSlot,CtrlType,ModelName,Manufacturer,SupplierSN,PartNo,FruNo,"
    "FwVer,SFlags,Warning,Temperature,RemainLife,Capacity,FormFactor) SELECT iif(i%4=1,3,2),i/4,255,0,"
    "'VENDOR MZWLL1T6HAJQ-00005','Vendor',printf('S%07d',i),'SSS7A00002','01PG002','GPNA','0',0,35,98,"
    "1600321314816,0x11 FROM n WHERE i%4 IN (1,3)",
    "INSERT INTO PCISetting "
    "(SettingID,SettingName,PfaKey,CurrentValue,PendingValue,SuppressIf,GrayIf,GroupID,"
    "GroupName,Mriname,ShortDesc,FullDesc,Type,Flags,Mininstances,Maxinstances,Defvalue,Mfg_default,RecordId,"
    "Minim,Maxim,Step,Mins,Maxs,Pattern,Numchoices,Choices) SELECT "
    "iif(k=0,'NetworkAdapter.','StorageOption.')||i,"
    "'Setting '||i,iif(k=0,?2,i<<8),'Enabled','Enabled','','','Group 1','Network','NetSetting'||i,'a "
    "setting',"
    "'A setting of the adapter, described at some length for whoever changes "
    "it.',1,2,0,1,'Enabled','Enabled',"
    "'R'||i,0,100,1,0,64,'',2,'Enabled;Disabled' FROM f,n WHERE k<2",
};

}  // namespace

Inventory::Inventory(int rows) {
  open();
  const Connection connection = open_raw(path());
  execute(connection.get(), "BEGIN");
  for (const char* statement : kFill) {
    const Prepared prepared = prepare(connection.get(), (std::string(kRows) + statement).c_str());
    bind(prepared.get(), rows, kBusyFunction);
    if (sqlite3_step(prepared.get()) != SQLITE_DONE)
      throw std::runtime_error(sqlite3_errmsg(connection.get()));
  }
  execute(connection.get(), "COMMIT");
}

void Inventory::open() const {
  const char* const current = std::getenv("ZYMDB_INVENTORY");
  if (current != nullptr && current == path()) return;
  if (current != nullptr) zym_db_close(get_dmdb_handle());
  setenv("ZYMDB_INVENTORY", path().c_str(), 1);
  if (get_dmdb_handle() == nullptr) throw std::runtime_error("no inventory in " + folder_.path().string());
}

std::string Inventory::contents() const {
  std::string all;
  for (const char* name : {"inventory.db", "inventory.db-wal"}) {
    std::ifstream file(folder_.file(name), std::ios::binary);
    all.append(std::istreambuf_iterator<char>(file), {});
    all += '\n';
  }
  return all;
}

void Inventory::mark() {
  marked_ = contents();
}
bool Inventory::is_written_since_mark() const {
  return contents() != marked_;
}

Inventory& inventory(int rows) {
  static std::map<int, Inventory> made;
  Inventory& found = made.try_emplace(rows, rows).first->second;
  found.open();
  return found;
}

}  // namespace bench
