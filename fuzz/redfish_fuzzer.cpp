// Whatever a path, a query, a header and a body are: the answer is one that the protocol knows, whole JSON
// where it says so, about the path that was asked for, and nothing but pending values changes.
//
// An input is lines: the method, the role as a number, the path, the query as NAME=VALUE between "&", one
// header as NAME: VALUE; the body is the rest.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "checks.h"
#include "collect/collector.h"
#include "common/client_objects.h"
#include "records/pci.h"
#include "service/redfish/redfish.h"
#include "service/redfish/some_accounts.h"
#include "support/temporary_folder.h"
#include "zymdb_pci_settings.h"

namespace {

using namespace zymdb;
using namespace zymdb::service;
using zymdb::fuzz::require;
using Json = nlohmann::json;

std::string_view next_line(std::string_view& text) {
  const size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

Method method_of(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, Method>, 7> kMethods = {{{"GET", Method::kGet},
                                                                            {"HEAD", Method::kHead},
                                                                            {"POST", Method::kPost},
                                                                            {"PUT", Method::kPut},
                                                                            {"PATCH", Method::kPatch},
                                                                            {"DELETE", Method::kDelete},
                                                                            {"OPTIONS", Method::kOptions}}};
  for (const auto& [known, method] : kMethods) {
    if (known == name) return method;
  }
  return Method::kOther;
}

Fields pairs_of(std::string_view text, char between, std::string_view within) {
  Fields fields;
  while (!text.empty()) {
    const size_t end = text.find(between);
    const std::string_view pair = text.substr(0, end);
    const size_t at = pair.find(within);
    fields.emplace_back(pair.substr(0, at), at == pair.npos ? "" : pair.substr(at + within.size()));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  return fields;
}

Request request_of(std::string_view text) {
  Request request;
  request.method = method_of(next_line(text));
  const std::string_view role = next_line(text);
  const bool is_known = role.size() == 1 && role[0] >= '0' && role[0] <= '3';
  request.caller = {
      .user = "somebody", .role = is_known ? static_cast<Role>(role[0] - '0') : Role::kNone, .session = {}};
  request.path = next_line(text);
  request.query = pairs_of(next_line(text), '&', "=");
  request.headers = pairs_of(next_line(text), '\0', ": ");
  request.headers.emplace_back("Content-Type", "application/json");
  request.body = text;
  return request;
}

// The example server with a few settings.
class Service {
 public:
  Service() {
    setenv("ZYMDB_INVENTORY", folder_.file("inventory.db").c_str(), 1);
    const auto summary = collect::collect_inventory({.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci",
                                                     .smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios",
                                                     .sysfs = ""});
    require(summary.ok(), "the example server cannot be collected", summary.error);
    for (const char* const id : {"Boot.1", "Vlan.1", "Name.1"}) {
      ZYMDB_PCI_Config_Setting setting{};
      std::string(id).copy(setting.SettingID, sizeof setting.SettingID - 1);
      std::string("1").copy(setting.CurrentValue, sizeof setting.CurrentValue - 1);
      std::string("1").copy(setting.PendingValue, sizeof setting.PendingValue - 1);
      setting.Type = id[0] == 'V' ? 1 : 0;
      setting.Maxim = 4094;
      if (id[0] == 'B') std::string("1;PXE").copy(setting.Choices, sizeof setting.Choices - 1);
      require(extract_PCISetting_info(&setting) == 0, "a setting cannot be stored", id);
    }
    redfish_ = std::make_unique<Redfish>(current_, accounts_);
    before_ = everything_else();
  }

  Response answer(const Request& request) {
    return redfish_->answer_or_refuse(request, [](int, const std::string&) {});
  }

  // No event is sent to where an input wants it.
  void end_subscription(const Response& made) {
    Request request{.method = Method::kDelete,
                    .caller = {.user = "owner", .role = Role::kAdministrator, .session = {}}};
    for (const auto& [name, value] : made.headers) {
      if (name == "Location") request.path = value;
    }
    if (!request.path.starts_with("/redfish/v1/EventService/")) return;
    require(redfish_->answer(request).status == 204, "a subscription that does not end", request.path);
  }

  void require_unchanged() { require(everything_else() == before_, "more than pending values changed"); }

 private:
  // All that no request may change.
  std::vector<std::vector<documents::Part>> everything_else() {
    std::vector<std::vector<documents::Part>> all;
    for (documents::PartClass each : current_.get()->classes) {
      const auto pending = each.field("PendingValue");
      for (auto& part : each.parts) {
        if (pending) part[*pending] = {};
      }
      all.push_back(std::move(each.parts));
    }
    return all;
  }

  TemporaryFolder folder_;
  Current current_{records::kPciIdsFile};
  SomeAccounts accounts_;
  std::unique_ptr<Redfish> redfish_;
  std::vector<std::vector<documents::Part>> before_;
};

void check_body(const Request& request, const Response& response, std::string_view body) {
  const Json json = Json::parse(body, nullptr, false);
  require(json.is_object(), "an answer that is no JSON object", body);
  if (response.status >= 400) {
    require(json.contains("error") && !json["error"]["@Message.ExtendedInfo"].empty(),
            "an error without a message", body);
  } else if (json.contains("@odata.id") && response.status == 200) {
    std::string path = json["@odata.id"];
    if (path.back() == '/') path.pop_back();
    const bool has_only =
        std::ranges::any_of(request.query, [](const auto& each) { return each.first == "only"; });
    require(request.path.starts_with(path) || has_only, "an answer about another path", path);
  }
}

void check(const Request& request, const Response& response) {
  static const std::set<int> kStatuses = {200, 201, 204, 304, 400, 401, 403, 404,
                                          405, 406, 412, 415, 501, 503, 507};
  require(kStatuses.contains(response.status), "a status of no meaning", std::to_string(response.status));
  for (const auto& [name, value] : response.headers)
    require(value.find_first_of("\r\n") == value.npos, "a header that ends early", value);
  const bool is_json = std::ranges::any_of(response.headers, [](const auto& header) {
    return header.first == "Content-Type" && header.second.starts_with("application/json");
  });
  if (is_json && response.body != nullptr) check_body(request, response, *response.body);
  if (!request.caller.may(Role::kReadOnly) && response.status == 200)
    require(request.path.size() <= std::string_view("/redfish/v1/$metadata/").size(),
            "nobody is told of a part", request.path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Service service;
  const Request request = request_of({reinterpret_cast<const char*>(data), size});
  const Response response = service.answer(request);
  check(request, response);
  if (response.status == 201) service.end_subscription(response);
  if (request.method != Method::kGet && response.status < 400) service.require_unchanged();
  return 0;
}
