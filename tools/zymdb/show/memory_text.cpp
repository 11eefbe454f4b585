#include "show/memory_text.h"

namespace zymdb::tool {

std::string size_text(uint64_t mebibytes) {
  constexpr uint64_t kGibibyte = 1024;
  if (mebibytes != 0 && mebibytes % kGibibyte == 0) return std::to_string(mebibytes / kGibibyte) + " GiB";
  return std::to_string(mebibytes) + " MiB";
}

}  // namespace zymdb::tool
