#include <cstdlib>

#include "controller/ruvo_log.h"
#include "storage/properties.h"
#include "zymdb_storage.h"

using namespace zymdb;

namespace {

// In the path of a backplane's property its number stands here, and its other properties share what is before
// the second position.
constexpr size_t kNumber = 22;
constexpr size_t kPrefix = 24;

uint8_t read_count(const PropertyConnection& properties, const char* prefix, const char* name) {
  PropertyQuery query(properties, Filter<128>("propName='%s%s'", prefix, name));
  return query.step() == ZYM_DB_STATUS_ROW ? query.value() : uint8_t{0};
}

void add(uint8_t count, unsigned char& sum) {
  sum = static_cast<unsigned char>(sum + count);
}

}  // namespace

int zymdb_get_bp_drive_count(unsigned char* max_drives, unsigned char* installed_drives) {
  const PropertyConnection properties;
  if (!properties) return ZYM_DB_STATUS_NO_DB;

  *max_drives = 0;
  *installed_drives = 0;
  PropertyQuery presences(properties, "propName LIKE '%sep%presence'");
  while (presences.step() == ZYM_DB_STATUS_ROW) {
    PropertyName name = {};
    presences.read_name(name);
    if (presences.value() == 0) continue;
    const int number = static_cast<int>(std::strtol(name + kNumber, nullptr, 10));
    name[kPrefix] = '\0';
    const uint8_t most = read_count(properties, name, "max_drives");
    const uint8_t installed = read_count(properties, name, "installed_drives");
    add(most, *max_drives);
    add(installed, *installed_drives);
    ruvo_log::logInfo("Sep[%d]: max_drives=%d, installed_drives=%d.\n", number, most, installed);
  }
  return presences.status();
}
