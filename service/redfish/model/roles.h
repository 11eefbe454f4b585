// Roles by the protocol's names.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_ROLES_H
#define ZYMDB_SERVICE_REDFISH_MODEL_ROLES_H

#include "service/http/message.h"

namespace zymdb::service::redfish {

struct RoleName {
  Role role;
  const char* id;
  const char* privileges[5];
};

inline constexpr RoleName kRoleNames[] = {
    {Role::kReadOnly, "ReadOnly", {"Login", "ConfigureSelf"}},
    {Role::kOperator, "Operator", {"Login", "ConfigureComponents", "ConfigureSelf"}},
    {Role::kAdministrator,
     "Administrator",
     {"Login", "ConfigureManager", "ConfigureUsers", "ConfigureComponents", "ConfigureSelf"}},
};

// Null of nobody.
constexpr const RoleName* name_of(Role role) {
  for (const RoleName& each : kRoleNames) {
    if (each.role == role) return &each;
  }
  return nullptr;
}

}  // namespace zymdb::service::redfish

#endif
