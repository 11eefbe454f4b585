// Whatever bytes stand for SMBIOS tables: they are refused, or every structure can be read and the slots that
// come out bear numbers of their own.
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "checks.h"
#include "collect/model/machine.h"
#include "collect/sources/smbios/memory_position.h"
#include "common/bytes.h"
#include "common/source_file.h"
#include "common/text.h"

namespace {

using namespace zymdb;
using namespace zymdb::collect;
using zymdb::fuzz::require;

void check_memory(const SmbiosTables& tables) {
  std::vector<MemoryPosition> positions;
  for (const auto& device : decode_memory(tables))
    positions.push_back(memory_position(device.locator.value_or(""), device.bank.value_or("")));
  forget_shared_numbers(positions);
  std::set<MemoryPosition> places;
  for (const auto& position : positions)
    require(!position.module || places.insert(position).second, "two modules have one place");
}

void check(SmbiosTables tables) {
  require(tables.is_whole() || !tables.notices().empty(), "a break that nobody is told of");
  check_memory(tables);
  for (const auto& system : decode_system(tables))
    require(!system.uuid || known_uuid(*system.uuid) == system.uuid, "a UUID that is none");
  for (const auto& structure : tables.structures()) {
    for (size_t offset = 0; offset < structure.length(); ++offset)
      if (const auto text = structure.text(offset)) require(!text->empty(), "an empty text");
    for (size_t offset = 0; offset <= 0xFF; ++offset)
      require(structure.field<uint8_t>(offset).has_value() == (offset < structure.length()),
              "a field beside its structure");
  }
  Findings findings;
  findings.functions.emplace();
  findings.smbios = std::move(tables);
  std::set<std::pair<Location, uint16_t>> numbers;
  for (const auto& slot : build_machine(std::move(findings)).slots) {
    require(slot.number && numbers.emplace(slot.location, *slot.number).second,
            "a slot's number comes twice");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    check(SmbiosTables::parse_dump(as_text({data, size}), "input"));
  } catch (const SourceError&) {
    // A refused table is as good as a read one.
  }
  return 0;
}
