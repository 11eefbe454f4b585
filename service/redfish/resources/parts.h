// What resources of several kinds share.
#ifndef ZYMDB_SERVICE_REDFISH_RESOURCES_PARTS_H
#define ZYMDB_SERVICE_REDFISH_RESOURCES_PARTS_H

#include <optional>
#include <string>
#include <vector>

#include "service/redfish/model/json.h"
#include "service/redfish/model/machine.h"

namespace zymdb::service::redfish {

// Health where something tells of it: "OK" unless it deserves a look.
Json status(const char* state, std::optional<bool> is_warned = {});
// A position with nothing in it is absent.
Json status_of(const Row& row, std::optional<bool> is_warned = {});

// The first that says something, as UTF-8.
std::string first_text(std::initializer_list<std::string> texts);

// An array of links, and how many they are: "Drives", "Drives@odata.count".
void add_links(Json& to, const std::string& property, const std::vector<std::string>& paths);

// What the device's first function and its adapter fill of such a resource; the adapter knows better.
void fill_from_device(Json& json, const Device& device, std::string_view resource);

// Where the resources of a device are.
std::string path_of(const Device& device);
std::string path_of(const Device& device, const Function& function);
std::string adapter_path(const Device& device);
std::string storage_path(const Device& device);
std::string path_of_drive(const FunctionPart& drive);
std::string path_of_gpu(const FunctionPart& gpu);
std::string path_of_port(const FunctionPart& port);
std::string path_of_network_function(const FunctionPart& port);

// Devices that are network adapters, and such that have drives.
bool is_network_adapter(const Machine& machine, const Device& device);
bool is_storage(const Machine& machine, const Device& device);

}  // namespace zymdb::service::redfish

#endif
