#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "db/filter.h"
#include "db/query.h"
#include "db/rows.h"
#include "pci_settings/setting_columns.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

constexpr uint32_t kFlagged = 2;

// Whatever the path names is opened without waiting: a pipe can be read, though nobody may ever write it.
bool can_be_read(const char* path) {
  int file;
  do file = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  while (file < 0 && errno == EINTR);
  if (file < 0) return false;
  close(file);
  return true;
}

bool are_being_parsed() {
  return can_be_read("/tmp/dp.ucmparsing");
}

Filter<128> settings_of(unsigned int pfaKey, const char* prefix) {
  const int key = static_cast<int>(pfaKey);
  return prefix != nullptr ? Filter<128>("PfaKey=%d AND SettingID like '%s%%'", key, prefix)
                           : Filter<128>("PfaKey=%d", key);
}

// Puts the text before an id's first "." (leading ones aside) where the id stands.
const char* cut_to_family(char* id) {
  char* rest = nullptr;
  const char* const family = strtok_r(id, ".", &rest);
  return family != nullptr ? family : "";
}

}  // namespace

bool fileexist(const std::string& path) {
  return can_be_read(path.c_str());
}

int zymdb_get_pci_configID(unsigned int pfaKey, char* ids) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (are_being_parsed()) return ZYMDB_PCI_SETTING_PARSING;

  Query query(handle, "PCISetting", {"SettingID"}, settings_of(pfaKey, nullptr));
  if (!query.has_result()) return query.status();
  const unsigned rows = query.row_count();
  char previous[128] = {};
  for (unsigned row = 0; query.step() == ZYM_DB_STATUS_ROW && row < rows; ++row) {
    char id[128] = {};
    // An id read with status 0 is passed over: only what the client hands out with another one counts.
    if (query.read_text(0, id, sizeof id) == ZYM_DB_STATUS_OK) continue;
    const char* const family = cut_to_family(id);
    if (family[0] == '\0' || std::strcmp(family, previous) == 0) continue;
    if (previous[0] != '\0') std::strcat(ids, ":");
    std::strcat(ids, family);
    std::strcpy(previous, family);
  }
  return ZYM_DB_STATUS_OK;
}

int zymdb_get_pci_configSet_count(unsigned int pfaKey, const char* prefix, unsigned short* count) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (are_being_parsed()) return ZYMDB_PCI_SETTING_PARSING;

  _ZYMDB_PCI_Generic adapter{};
  if (const int status = zymdb_get_pci_generic_info(pfaKey, &adapter); status != ZYM_DB_STATUS_OK)
    return status;
  if (adapter.VendorId == ZYMDB_VENDOR_WITHOUT_SETTINGS) {
    *count = 0;
    return ZYM_DB_STATUS_OK;
  }
  Query query(handle, "PCISetting", {"_id"}, settings_of(pfaKey, prefix));
  if (query.has_result()) *count = static_cast<unsigned short>(query.row_count());
  return query.status();
}

int zymdb_get_pci_configSet_list(unsigned int pfaKey, const char* prefix, unsigned int expected,
                                 ZYMDB_PCI_Config_Setting* records, unsigned short flaggedOnly,
                                 unsigned short* filled) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (are_being_parsed()) return ZYMDB_PCI_SETTING_PARSING;

  Query query(handle, "PCISetting", kSettingColumns, settings_of(pfaKey, prefix));
  if (!query.has_result()) return query.status();
  if (query.row_count() != expected) return ZYMDB_PCI_SETTING_COUNT_MISMATCH;

  unsigned settings = 0;
  read_rows(query, records, expected, settings, [&](ZYMDB_PCI_Config_Setting& setting) {
    uint32_t flags = setting.Flags;
    const int status = query.read(0, flags);
    setting.Flags = flags;
    if (status != ZYM_DB_STATUS_OK || (flaggedOnly != 0 && (flags & kFlagged) == 0)) return false;
    query.read_columns(std::span(kSettingColumns).subspan(1), &setting, 1);
    return true;
  });
  *filled = static_cast<unsigned short>(settings);
  return ZYM_DB_STATUS_OK;
}
