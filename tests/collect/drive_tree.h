// A sysfs tree with drives in it.
#ifndef ZYMDB_TESTS_COLLECT_DRIVE_TREE_H
#define ZYMDB_TESTS_COLLECT_DRIVE_TREE_H

#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace zymdb::collect {

class DriveTree {
 public:
  std::string root() const { return folder_.path().string(); }

  void nvme(const std::string& function, const std::string& name, const std::string& serial,
            const std::string& firmware = "GDC5302Q") const {
    const std::string drive = "devices/pci0000:00/" + function + "/nvme/" + name;
    folder_.write(drive + "/model", "SAMSUNG MZQL21T9HCJR-00A07              \n");
    folder_.write(drive + "/serial", serial + "      \n");
    folder_.write(drive + "/firmware_rev", firmware + "\n");
    folder_.write(drive + "/" + name + "n1/size", "3750748848\n");
    link("class/nvme", drive, name);
  }

  // A disk behind a host's link ("ata3") or port ("host0/port-0:0").
  void disk(const std::string& function, const std::string& path, const std::string& target,
            const std::string& name, const std::string& vendor, bool rotates) const {
    const std::string device = "devices/pci0000:00/" + function + "/" + path + "/" + target;
    folder_.write(device + "/vendor", vendor + "     \n");
    folder_.write(device + "/model", "ST16000NM001G-2K\n");
    folder_.write(device + "/rev", "SN02\n");
    folder_.write(device + "/wwid", "naa.5000c500c3000001\n");
    folder_.write(device + "/vpd_pg80", std::string("\0\x80\0\x08ZL200001", 12));
    folder_.write(device + "/block/" + name + "/size", "31251759104\n");
    folder_.write(device + "/block/" + name + "/removable", "0\n");
    folder_.write(device + "/block/" + name + "/queue/rotational", rotates ? "1\n" : "0\n");
    std::filesystem::create_directory_symlink(at(device), at(device) / "block" / name / "device");
    link("block", device + "/block/" + name, name);
  }

  // A disk of a virtual machine.
  void virtual_disk(const std::string& function, const std::string& name, const std::string& serial) const {
    const std::string device = "devices/pci0000:00/" + function + "/virtio2";
    folder_.write(device + "/vendor", "0x1af4\n");
    folder_.write(device + "/block/" + name + "/size", "41943040\n");
    folder_.write(device + "/block/" + name + "/serial", serial);
    std::filesystem::create_directory_symlink(at(device), at(device) / "block" / name / "device");
    link("block", device + "/block/" + name, name);
  }

  // The kernel's driver of a function.
  void driver(const std::string& function, const std::string& name) const {
    std::filesystem::create_directories(at("bus/pci/drivers/" + name));
    std::filesystem::create_directories(at("devices/pci0000:00/" + function));
    std::filesystem::create_directory_symlink(at("bus/pci/drivers/" + name),
                                              at("devices/pci0000:00/" + function + "/driver"));
  }

  void write(const std::string& name, const std::string& content) const { folder_.write(name, content); }
  void remove(const std::string& link) const { std::filesystem::remove(at(link)); }

  // A link in a class's folder to a device's.
  void link(const std::string& kind, const std::string& target, const std::string& name) const {
    std::filesystem::create_directories(at(kind));
    std::filesystem::create_directory_symlink(at(target), at(kind) / name);
  }

 private:
  std::filesystem::path at(const std::string& name) const { return folder_.path() / name; }

  TemporaryFolder folder_;
};

}  // namespace zymdb::collect

#endif
