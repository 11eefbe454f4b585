// Which resources there are.
#ifndef ZYMDB_SERVICE_REDFISH_RESOURCES_RESOURCES_H
#define ZYMDB_SERVICE_REDFISH_RESOURCES_RESOURCES_H

#include <memory>

#include "service/redfish/model/tree.h"

namespace zymdb::service::redfish {

// All that a document tells of.
std::shared_ptr<const Tree> make_tree(Tree::DocumentPtr document);

// Each adds those of one kind. A collection is there before its members.
void add_services(Tree& tree);
void add_registries(Tree& tree);
void add_system(Tree& tree);
void add_processors(Tree& tree);
void add_memory(Tree& tree);
void add_chassis(Tree& tree);
void add_pcie_devices(Tree& tree);
void add_storage(Tree& tree);
void add_network(Tree& tree);
void add_firmware(Tree& tree);
void add_bios(Tree& tree);

}  // namespace zymdb::service::redfish

#endif
