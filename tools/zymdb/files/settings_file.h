// Settings files: a JSON array of objects, whose keys are the fields of a setting.
#ifndef ZYMDB_TOOL_FILES_SETTINGS_FILE_H
#define ZYMDB_TOOL_FILES_SETTINGS_FILE_H

#include <string>
#include <string_view>
#include <vector>

#include "records/pci_settings.h"

namespace zymdb::tool {

using records::SettingRecord;

// The settings of a text, in its order. "SettingID" (unique in the file) and "PfaKey" are required; other
// fields that are left out are empty or 0, and a text may be null for an empty one.
//
// Throws SourceError, which names the file, the line and the key, for a file that is no such array:
// unknown keys, keys that come twice, values of another type, numbers beyond 32 bits, and texts that cannot
// be stored as they are (too long for their field, or with a NUL or a double quote in them).
std::vector<SettingRecord> parse_settings(std::string_view text, const std::string& file);

// The settings of a file; also throws when it cannot be read.
std::vector<SettingRecord> read_settings_file(const std::string& path);

}  // namespace zymdb::tool

#endif
