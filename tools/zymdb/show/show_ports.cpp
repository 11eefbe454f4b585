#include <memory>

#include "records/network.h"
#include "show/listing.h"
#include "show/listings.h"
#include "show/ports.h"

namespace zymdb::tool {
namespace {

constexpr char kPhysicalExamples[] =
    "  zymdb show ports\n"
    "  zymdb show ports --adapter \"slot 3\"\n"
    "  zymdb show ports --function 3b:00.0 --columns PORT,LINK,SPEED\n"
    "  zymdb show ports --json | jq '.ports[] | select(.Link == \"down\")'";

constexpr char kLogicalExamples[] =
    "  zymdb show logical-ports\n"
    "  zymdb show logical-ports --function 3b:00.0\n"
    "  zymdb show logical-ports --json | jq -r '.\"logical-ports\"[].PermanentAddress'";

}  // namespace

void add_show_ports(CommandTree& tree, CLI::App& show) {
  const auto physical = std::make_shared<PortSelection>();
  add_port_options(
      add_listing(tree, show, {records::physical_ports(port_choice(physical)), kPhysicalExamples}),
      *physical);
  const auto logical = std::make_shared<PortSelection>();
  add_port_options(add_listing(tree, show, {records::logical_ports(port_choice(logical)), kLogicalExamples}),
                   *logical);
}

}  // namespace zymdb::tool
