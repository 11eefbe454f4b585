// An inventory with a few rows in every table of the machine's, and what is done to it: one for each engine.
#ifndef ZYMDB_FUZZ_WATCHED_INVENTORY_H
#define ZYMDB_FUZZ_WATCHED_INVENTORY_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "operations.h"

namespace zymdb::fuzz {

class WatchedInventory {
 public:
  // The one that the environment names from now on.
  static std::unique_ptr<WatchedInventory> make();

  virtual ~WatchedInventory() = default;

  // Gives the texts of every row of a table.
  void store(const std::string& table, const Texts& texts) const;

  // What was done until now.
  virtual void forget() = 0;

  struct Changes {
    std::set<std::string> tables;  // the machine's, with a changed row
    bool has_entry = false;        // the client's own account of a change
  };
  // What has been done since.
  virtual Changes changes() = 0;

  // Gives tables, or whatever may have changed, their first rows back.
  virtual void restore(const std::string& table) = 0;
  virtual void restore() = 0;

 protected:
  static constexpr unsigned kRows = 3;

  // In the n-th row every number is n and every text "n", so that all keys lead to a row of every table. Then
  // NVIDIA's cards, a Marvell controller, a DPU in slot 3, drives in bays and of the kinds that lists ask
  // for.
  static constexpr const char* kParts[] = {
      "UPDATE Firmwares SET Manufacture='NVIDIA'",
      "UPDATE VPDs SET Manufacture='NVIDIA'",
      "UPDATE PCIs SET Location=2, VendorId=6987, DeviceId=37424, SubVendorId=65535 WHERE _id=2",
      "UPDATE PCIs SET Location=1, VendorId=5555, DeviceId=41686, HardwareId=768 WHERE _id=3",
      "UPDATE Firmwares SET HardwareId=768 WHERE _id=3",
      "UPDATE PldmDeviceFirmware SET Location=1, DeviceId=41686 WHERE _id=3",
      "UPDATE AimDisks SET Presence=1, Location='Bay ' || _id, LocationId=_id+1, DriveTypeId=_id+2",
      "UPDATE NVMeDrives SET CtrlType=0 WHERE _id=1",
  };

  struct Columns {
    unsigned count = 0;
    std::vector<std::string> texts;  // their names
  };
  std::map<std::string, Columns> tables_;

  // What puts the n-th row into each table.
  std::vector<std::string> insertions(unsigned n) const;
};

}  // namespace zymdb::fuzz

#endif
