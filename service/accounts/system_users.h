// The accounts of this system: their passwords, as PAM judges them, and the groups that say what they may do.
#ifndef ZYMDB_SERVICE_ACCOUNTS_SYSTEM_USERS_H
#define ZYMDB_SERVICE_ACCOUNTS_SYSTEM_USERS_H

#include <string>

#include "service/http/message.h"

namespace zymdb::service {

// What the PAM service is called: its rules are in /etc/pam.d/zymdb.
inline constexpr char kPamService[] = "zymdb";

// Whether the password is the user's, and the account may be used now. Takes as long as the rules of the
// system take.
bool is_password(const std::string& user, const std::string& password, const std::string& peer);

// By the groups zymdb-readonly, zymdb-operator and zymdb-administrator: the most that one of them gives.
Role role_of(const std::string& user);

}  // namespace zymdb::service

#endif
