// Whatever text stands for a PCI dump: it is refused, or it makes a machine in which every function has a key
// of its own that fits 31 bits, every bridge above leads nearer to the root, and a link is known whole or not
// at all. What is read without an empty line at its end is read with one, and a tool's line in front of it is
// a notice.
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "checks.h"
#include "collect/model/machine.h"
#include "collect/sources/pci/lspci_dump.h"
#include "common/bytes.h"
#include "common/source_file.h"

namespace {

using namespace zymdb;
using namespace zymdb::collect;
using zymdb::fuzz::require;

void check_link(const PciLink& link) {
  const bool known[] = {link.width.has_value(), link.generation.has_value(), link.max_width.has_value(),
                        link.max_generation.has_value()};
  for (const bool each : known) require(each == known[0], "half a link");
  require(link.width.value_or(0) < 64 && link.max_width.value_or(0) < 64, "more lanes than the bits hold");
}

void check_other_ends(const std::string& text, size_t functions) {
  std::vector<std::string> notices;
  const auto same = parse_lspci_dump("pcilib: a line\n" + text + "\n\n", "input", &notices);
  require(same.size() == functions, "an empty line at the end changes what is read");
  require(notices.size() == 1, "a tool's line is not told of");
}

void check(std::vector<PciFunction> functions) {
  for (const auto& function : functions) check_link(function.link);
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
    const std::string text(as_text({data, size}));
    auto functions = parse_lspci_dump(text, "input");
    check_other_ends(text, functions.size());
    check(std::move(functions));
  } catch (const SourceError&) {
    // A refused dump is as good as a read one.
  }
  return 0;
}
