#include "platform/media_fixture.h"

namespace {

void overwrite(const std::string& path, std::streamoff from, size_t size) {
  std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
  stream.seekp(from);
  stream << std::string(size, 'g');
}

}  // namespace

const std::vector<Damage>& damages() {
  static const std::vector<Damage> all = {
      {"CorruptHeader", [](const std::string& path) { overwrite(path, 0, 100); }, "file is not a database"},
      {"CorruptSchemaPage", [](const std::string& path) { overwrite(path, 100, 924); },
       "database disk image is malformed"},
      {"CorruptPages", [](const std::string& path) { overwrite(path, 1024, 400000); },
       "database disk image is malformed"},
      {"CutShort", [](const std::string& path) { std::filesystem::resize_file(path, 2048); },
       "database disk image is malformed"},
      {"Text", [](const std::string& path) { std::ofstream(path) << std::string(9000, 't'); },
       "file is not a database"},
  };
  return all;
}
