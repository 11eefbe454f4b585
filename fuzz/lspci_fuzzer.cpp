// Whatever text stands for a PCI dump: it is refused, or it makes a machine in which every function has a key
// of its own that fits 31 bits, and every bridge above leads nearer to the root.
#include <cstdint>
#include <set>
#include <utility>

#include "checks.h"
#include "collect/model/machine.h"
#include "collect/sources/pci/lspci_dump.h"
#include "common/bytes.h"
#include "common/source_file.h"

namespace {

using namespace zymdb;
using namespace zymdb::collect;
using zymdb::fuzz::require;

void check(std::vector<PciFunction> functions) {
  Findings findings;
  findings.functions = std::move(functions);
  const Machine machine = build_machine(std::move(findings));
  std::set<FunctionKey> keys;
  for (const auto& function : *machine.functions) {
    require(function.key.value < 1U << 31 && keys.insert(function.key).second, "a key that is not its own");
    require(function.device_key == (function.key.value & ~0xFFU), "a function of another device");
    require(!function.bridge_key || function.bridge_key->value >> 16 < function.key.value >> 16,
            "a bridge that leads away from the root");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    check(parse_lspci_dump(as_text({data, size}), "input"));
  } catch (const SourceError&) {
    // A refused dump is as good as a read one.
  }
  return 0;
}
