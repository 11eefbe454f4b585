#include <memory>
#include <utility>

#include "records/pci.h"
#include "show/functions.h"
#include "show/listing.h"
#include "show/listings.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show functions\n"
    "  zymdb show functions --tree\n"
    "  zymdb show functions --columns ADDRESS,CLASS,NAME | grep -i ethernet\n"
    "  zymdb show functions --json | jq '.functions[] | select(.LinkState == \"reduced\")'";

}  // namespace

void add_show_functions(CommandTree& tree, CLI::App& show) {
  const auto names_file = std::make_shared<std::string>(records::kPciIdsFile);
  Listing listing{records::functions(names_file), kExamples};
  listing.tree_columns = "ADDRESS,LINK,CLASS,NAME";
  add_pci_ids_option(add_listing(tree, show, std::move(listing)), *names_file);
}

}  // namespace zymdb::tool
