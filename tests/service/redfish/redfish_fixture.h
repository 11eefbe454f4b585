// The Redfish service over an embedded inventory: requests in, responses out.
#ifndef ZYMDB_TESTS_SERVICE_REDFISH_REDFISH_FIXTURE_H
#define ZYMDB_TESTS_SERVICE_REDFISH_REDFISH_FIXTURE_H

#include <gmock/gmock.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "collect/collector.h"
#include "collect/machines.h"
#include "common/client_objects.h"
#include "records/pci.h"
#include "service/http/kept_log.h"
#include "service/redfish/redfish.h"
#include "service/redfish/some_accounts.h"
#include "support/inventory.h"
#include "support/parsing_marker.h"
#include "zymdb_pci_settings.h"

namespace zymdb::service {

using Json = nlohmann::json;

inline constexpr char kRootPath[] = "/redfish/v1";
inline constexpr char kSystemPath[] = "/redfish/v1/Systems/1";
inline constexpr char kSessionsPath[] = "/redfish/v1/SessionService/Sessions";
inline constexpr char kSettingsPath[] = "/redfish/v1/Systems/1/Bios/Settings";
inline constexpr char kStreamPath[] = "/redfish/v1/EventService/SSE";

inline std::string header_of(const Response& response, const std::string& name) {
  for (const auto& [key, value] : response.headers) {
    if (key == name) return value;
  }
  return "";
}

inline std::string body_of(const Response& response) {
  return response.body != nullptr ? *response.body : "";
}

inline Json json_of(const Response& response) {
  return Json::parse(body_of(response), nullptr, false);
}

// "Base.1.22.PropertyUnknown" of an error's first message.
inline std::string message_of(const Response& response) {
  const Json json = json_of(response);
  if (!json.is_object() || !json.contains("error")) return "no error: " + body_of(response);
  return json["error"]["@Message.ExtendedInfo"][0]["MessageId"];
}

class RedfishTest : public InventoryTest {
 protected:
  RedfishTest() : redfish_(std::make_unique<Redfish>(current_, accounts_)) {}

  static void collect_example() {
    const auto summary = collect::collect_inventory({.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci",
                                                     .smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios",
                                                     .sysfs = ""});
    ASSERT_TRUE(summary.ok()) << summary.error;
  }

  static Caller caller(Role role, const std::string& user = "somebody") {
    return {.user = user, .role = role, .session = {}};
  }

  static Request request(Method method, const std::string& path, Fields headers = {}) {
    return {.method = method,
            .path = path,
            .headers = std::move(headers),
            .caller = caller(Role::kAdministrator)};
  }

  Response ask(const Request& request) { return redfish_->answer_or_refuse(request, log_.log()); }

  Response get(const std::string& path, Fields query = {}, Fields headers = {}) {
    Request wanted = request(Method::kGet, path, std::move(headers));
    wanted.query = std::move(query);
    return ask(wanted);
  }

  Response send(Method method, const std::string& path, const std::string& body,
                Role role = Role::kAdministrator, Fields headers = {}) {
    Request wanted = request(method, path, std::move(headers));
    wanted.headers.emplace_back("Content-Type", "application/json");
    wanted.body = body;
    wanted.caller = caller(role);
    return ask(wanted);
  }

  Response log_in(const std::string& user, const std::string& password) {
    Request wanted = request(Method::kPost, kSessionsPath, {{"Content-Type", "application/json"}});
    wanted.body = Json{{"UserName", user}, {"Password", password}}.dump();
    wanted.caller = {};
    return ask(wanted);
  }

  // The system's serial number.
  static void set_serial(const std::string& serial) {
    const ValuesPtr values(zym_db_get_content_values(get_dmdb_handle()));
    zym_db_content_put_text(values.get(), "SerialNo", serial.c_str());
    ASSERT_EQ(zym_db_update(get_dmdb_handle(), "System", values.get(), "_id>0", nullptr, 0, nullptr), 0);
  }

  // A setting as the parser of the configuration stores it.
  static void given_setting(const std::string& id, const std::string& value, const std::string& choices = "",
                            uint32_t type = 0, uint32_t most = 0) {
    ZYMDB_PCI_Config_Setting setting{};
    const auto copy = [](auto& field, const std::string& text) { text.copy(field, sizeof field - 1); };
    copy(setting.SettingID, id);
    copy(setting.CurrentValue, value);
    copy(setting.PendingValue, value);
    copy(setting.Choices, choices);
    setting.PfaKey = 0x4b0000;
    setting.Type = type;
    setting.Maxim = most;
    ASSERT_EQ(extract_PCISetting_info(&setting), 0);
  }

  ParsingMarker marker_;  // nobody stores settings meanwhile
  Current current_{records::kPciIdsFile};
  SomeAccounts accounts_;
  std::unique_ptr<Redfish> redfish_;
  KeptLog log_;
};

}  // namespace zymdb::service

#endif
