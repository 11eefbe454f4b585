#include "terminal/system_journal.h"

#include <sys/uio.h>
#include <systemd/sd-journal.h>

#include <system_error>

#include "terminal/failure.h"

namespace zymdb::tool {

void send_to_journal(const std::vector<std::string>& fields) {
  std::vector<iovec> parts;
  for (const std::string& field : fields) parts.push_back({const_cast<char*>(field.data()), field.size()});
  const int result = sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
  if (result < 0)
    throw Failure("cannot write to the system's journal: " + std::generic_category().message(-result));
}

}  // namespace zymdb::tool
