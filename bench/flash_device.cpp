#include "flash_device.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "process.h"

namespace bench {
namespace {

constexpr off_t kSize = off_t{64} << 20;
constexpr int kSectorsWritten = 6;  // the field of a device's statistics
constexpr uint64_t kSectorSize = 512;

class Descriptor {
 public:
  Descriptor(const std::string& path, int flags) : number_(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
    require(number_, path);
  }
  ~Descriptor() { close(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  operator int() const { return number_; }

  static void require(int result, const std::string& what) {
    if (result < 0) throw NoDevice(what + ": " + std::strerror(errno));
  }

 private:
  int number_;
};

void make_file_system(const std::string& image) {
  if (Process({"mkfs.ext4", "-q", "-F", "-b", "4096", image}).wait() != 0)
    throw NoDevice("mkfs.ext4 makes no file system");
}

std::string free_device() {
  const Descriptor control("/dev/loop-control", O_RDWR);
  const int number = ioctl(control, LOOP_CTL_GET_FREE);
  Descriptor::require(number, "no free loop device");
  return "loop" + std::to_string(number);
}

// Lets go of the image with its last user.
void attach(int device, int image) {
  loop_config config{};
  config.fd = static_cast<uint32_t>(image);
  config.info.lo_flags = LO_FLAGS_AUTOCLEAR;
  Descriptor::require(ioctl(device, LOOP_CONFIGURE, &config), "no loop device");
}

}  // namespace

FlashDevice::FlashDevice() : mounted_(place_.path() / "mounted") {
  const std::string image = place_.file("image");
  const Descriptor file(image, O_RDWR | O_CREAT);
  Descriptor::require(ftruncate(file, kSize), image);
  make_file_system(image);
  Descriptor::require(unshare(CLONE_NEWNS), "no mount namespace");
  Descriptor::require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "no mounts of its own");
  const std::string name = free_device();
  const Descriptor device("/dev/" + name, O_RDWR);
  attach(device, file);
  std::filesystem::create_directory(mounted_);
  Descriptor::require(mount(("/dev/" + name).c_str(), mounted_.c_str(), "ext4", MS_NOATIME, nullptr), name);
  statistics_ = "/sys/block/" + name + "/stat";
}

FlashDevice::~FlashDevice() {
  umount2(mounted_.c_str(), MNT_DETACH);
}

uint64_t FlashDevice::written() const {
  const Descriptor root(mounted_, O_RDONLY);
  Descriptor::require(syncfs(root), mounted_);
  std::ifstream fields(statistics_);
  std::string field;
  for (int passed = 0; passed < kSectorsWritten; ++passed) fields >> field;
  uint64_t sectors = 0;
  if (!(fields >> sectors)) throw NoDevice(statistics_ + " does not tell what is written");
  return sectors * kSectorSize;
}

}  // namespace bench
