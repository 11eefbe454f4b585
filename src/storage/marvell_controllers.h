// The server's own Marvell controllers, which the M.2 and 7 mm drives hang on.
#ifndef ZYMDB_SRC_STORAGE_MARVELL_CONTROLLERS_H
#define ZYMDB_SRC_STORAGE_MARVELL_CONTROLLERS_H

#include <cstdint>
#include <optional>

#include "controller/database_client.h"
#include "db/growing_list.h"
#include "zymdb_storage.h"

namespace zymdb {

struct MarvellController {
  uint8_t slot;
  uint32_t function;  // its function key
};

// Appends the controllers that are in a slot; checks as zymdb_get_marvell_ctrl_slots documents them.
int collect_marvell_controllers(_zym_db_handle_t* handle, GrowingList<MarvellController>& controllers);

// The controllers as a list builder needs them: collected when the first drive asks, and none when that
// fails.
class DriveControllers {
 public:
  explicit DriveControllers(_zym_db_handle_t* handle) : handle_(handle) {}

  // Gives the drive the function key and type of the controller in its slot, if there is one.
  void assign(_ZYMDB_AimDisk& drive);

 private:
  _zym_db_handle_t* handle_;
  std::optional<GrowingList<MarvellController>> controllers_;
};

}  // namespace zymdb

#endif
