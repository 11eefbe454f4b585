#include "service/redfish/resources/resources.h"

#include <utility>

namespace zymdb::service::redfish {

std::shared_ptr<const Tree> make_tree(Tree::DocumentPtr document) {
  const auto tree = std::make_shared<Tree>(std::move(document));
  add_services(*tree);
  add_registries(*tree);
  add_system(*tree);
  add_processors(*tree);
  add_memory(*tree);
  add_chassis(*tree);
  add_pcie_devices(*tree);
  add_storage(*tree);
  add_network(*tree);
  add_firmware(*tree);
  add_bios(*tree);
  return tree;
}

}  // namespace zymdb::service::redfish
