// Answers requests for those who test in another language: one request a line as JSON, one response a line.
// The inventory is that of $ZYMDB_INVENTORY.
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "records/pci.h"
#include "service/redfish/redfish.h"
#include "tests/service/redfish/some_accounts.h"

namespace {

using Json = nlohmann::json;
using namespace zymdb::service;

Method method_of(const std::string& name) {
  if (name == "GET") return Method::kGet;
  if (name == "HEAD") return Method::kHead;
  if (name == "POST") return Method::kPost;
  if (name == "PATCH") return Method::kPatch;
  if (name == "DELETE") return Method::kDelete;
  return Method::kOther;
}

Fields fields_of(const Json& pairs) {
  Fields fields;
  for (const auto& pair : pairs) fields.emplace_back(pair[0].get<std::string>(), pair[1].get<std::string>());
  return fields;
}

Request request_of(const Json& json) {
  return {.method = method_of(json.value("method", "GET")),
          .path = json["path"],
          .query = fields_of(json.value("query", Json::array())),
          .headers = fields_of(json.value("headers", Json::array())),
          .body = json.value("body", ""),
          .caller = {.user = json.value("user", "owner"),
                     .role = static_cast<Role>(json.value("role", static_cast<int>(Role::kAdministrator))),
                     .session = ""}};
}

Json json_of(const Response& response) {
  Json headers = Json::object();
  for (const auto& [name, value] : response.headers) headers[name] = value;
  return {{"status", response.status},
          {"headers", std::move(headers)},
          {"body", response.body != nullptr ? *response.body : ""},
          {"is_stream", response.stream != nullptr}};
}

}  // namespace

int main() {
  Current current(zymdb::records::kPciIdsFile);
  SomeAccounts accounts;
  Redfish redfish(current, accounts);
  for (std::string line; std::getline(std::cin, line);)
    std::cout << json_of(
                     redfish.answer_or_refuse(request_of(Json::parse(line)), [](int, const std::string&) {}))
                     .dump()
              << std::endl;
}
