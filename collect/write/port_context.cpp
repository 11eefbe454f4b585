#include "collect/write/port_context.h"

#include <chrono>
#include <map>
#include <string>

#include "collect/write/port_samples.h"
#include "collect/write/stored_rows.h"

namespace zymdb::collect {

PortContext read_port_context(const FormerMachine& former) {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const std::string file = sample_file();
  PortContext context{std::chrono::duration_cast<milliseconds>(now).count(),
                      read_samples(file),
                      read_functions(former.handle, "PCIAdapter", "AIMSupported!=0"),
                      {}};
  std::erase_if(context.samples,
                [&](const auto& sample) { return former.replaced.contains(sample.first.first); });
  context.keep = [file](const CounterSamples& samples) { save_samples(file, samples); };
  return context;
}

}  // namespace zymdb::collect
