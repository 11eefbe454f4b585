// Whatever bytes a card's vital product data are: exactly they are read, and every text that comes out can be
// shown. A checksum stands in the way of most bytes, so they are tried once more with the right one.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "checks.h"
#include "collect/sources/pci/pci_vpd.h"
#include "common/bytes.h"

namespace {

using namespace zymdb;
using namespace zymdb::collect;
using zymdb::fuzz::require;

void check(const std::string& data) {
  // A copy of its own size, so that a read beyond it is noticed.
  const auto copy = std::make_unique<uint8_t[]>(data.size());
  data.copy(reinterpret_cast<char*>(copy.get()), data.size());
  const auto vpd = parse_pci_vpd({copy.get(), data.size()});
  if (!vpd) return;
  bool empty = true;
  for (const auto& text : {vpd->product_name, vpd->serial_number, vpd->part_number, vpd->manufacturer,
                           vpd->fru_number, vpd->model}) {
    if (!text) continue;
    empty = false;
    require(!text->empty(), "an empty text");
    require(text->size() <= data.size(), "a text that is longer than the data", *text);
    const auto is_control = [](unsigned char c) { return c < 0x20 || c == 0x7F; };
    require(std::none_of(text->begin(), text->end(), is_control), "a control character", *text);
  }
  require(vpd->empty() == empty, "says that it is empty, or that it is not");
}

// The first byte of the checksum's field makes the sum of all bytes up to it 0.
std::string with_checksum(std::string data) {
  const size_t field = data.find("RV");
  if (field == data.npos || field + 3 >= data.size()) return data;
  uint8_t sum = 0;
  for (size_t at = 0; at < field + 3; ++at) sum = static_cast<uint8_t>(sum + data[at]);
  data[field + 3] = static_cast<char>(-sum);
  return data;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  const std::string data(reinterpret_cast<const char*>(bytes), size);
  check(data);
  check(with_checksum(data));
  return 0;
}
