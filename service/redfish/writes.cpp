#include "service/redfish/writes.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "common/client_extensions.h"
#include "common/client_objects.h"
#include "records/pci_settings.h"
#include "service/redfish/headers.h"
#include "service/redfish/live.h"
#include "service/redfish/model/attributes.h"
#include "service/redfish/model/paths.h"
#include "zymdb_pci_settings.h"

namespace zymdb::service::redfish {
namespace {

using Entry = ZYMDB_PCI_Config_Set;

constexpr unsigned kLoginRetrySeconds = 30;
// Nothing of ours is deeper.
constexpr int kDeepest = 16;

constexpr const char* kOtherBiosProperties[] = {
    "Id",      "Name",  "Description", "AttributeRegistry",
    "Actions", "Links", "Oem",         "ResetBiosToDefaultsPending"};
constexpr char kApplyTime[] = "@Redfish.SettingsApplyTime";

struct TooDeep {};

bool is_annotation(const std::string& key) {
  return key.find('@') != std::string::npos;
}

std::optional<std::string> text_at(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return {};
  return found->get<std::string>();
}

// Of a login: what is missing, of another type, or nothing that a session has.
std::vector<Message> login_objections(const Json& object) {
  std::vector<Message> objections;
  for (const char* const name : {"UserName", "Password"}) {
    if (!object.contains(name))
      objections.push_back({"PropertyMissing", {name}, std::string("#/") + name});
    else if (!object[name].is_string())
      objections.push_back(
          {"PropertyValueTypeError", {object[name].type_name(), name}, std::string("#/") + name});
  }
  for (const auto& [key, value] : object.items()) {
    if (key != "UserName" && key != "Password" && !is_annotation(key))
      objections.push_back({"PropertyUnknown", {key.substr(0, 64)}});
  }
  return objections;
}

Response granted(const Login& login) {
  Response response = Response::of(201, kJsonType, text_of(session_resource(login.session)));
  response.headers.emplace_back("Location", kSessions + "/" + login.session.id);
  response.headers.emplace_back("X-Auth-Token", login.token);
  response.headers.emplace_back("OData-Version", "4.0");
  response.headers.emplace_back("Cache-Control", "no-store");
  return response;
}

// A browser would ask in a window of its own, and in the middle of a page that asks itself.
Response refused_login(const Request& request) {
  Response response = error_with(401, {{"AccessUnauthorized"}});
  if (!request.header("X-Requested-With"))
    response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"zymdb\"");
  return response;
}

// The library's entries are short, and its statements hold their texts between single quotes.
bool can_be_saved(const std::string& id) {
  return id.size() < sizeof(Entry::SettingID) && id.find('\'') == std::string::npos;
}

struct Wanted {
  std::vector<Entry> entries = {};
  std::vector<std::string> attributes = {};  // of the entries
  std::vector<Message> refused = {};         // values that cannot be
  std::vector<Message> unchanged = {};       // properties that cannot be changed
};

void add_attribute(const Machine& machine, const std::string& name, const Json& value, Wanted& wanted) {
  const std::string pointer = "#/Attributes/" + name.substr(0, 128);
  const auto setting = std::ranges::find(machine.settings, name, &Setting::attribute);
  if (setting == machine.settings.end()) {
    wanted.unchanged.push_back({"PropertyUnknown", {name.substr(0, 128)}, pointer});
    return;
  }
  const std::string id = setting->row.text("SettingID");
  if (!can_be_saved(id)) {
    wanted.unchanged.push_back({"PropertyNotWritable", {name}, pointer});
    return;
  }
  const NewValue saved = new_value(*setting, value);
  if (saved.objection) {
    wanted.refused.push_back(*saved.objection);
    return;
  }
  Entry entry{};
  std::memcpy(entry.SettingID, id.c_str(), id.size() + 1);
  std::memcpy(entry.PendingValue, saved.text.c_str(), saved.text.size() + 1);
  wanted.entries.push_back(entry);
  wanted.attributes.push_back(name);
}

void add_apply_time(const Json& value, Wanted& wanted) {
  const auto time = value.is_object() ? text_at(value, "ApplyTime") : std::nullopt;
  if (time != "OnReset")
    wanted.refused.push_back({"PropertyValueNotInList", {time.value_or("").substr(0, 64), "ApplyTime"}});
}

void add_property(const Machine& machine, const std::string& key, const Json& value, Wanted& wanted) {
  if (key == "Attributes" && value.is_object()) {
    for (const auto& [name, each] : value.items())
      if (!is_annotation(name)) add_attribute(machine, name, each, wanted);
  } else if (key == "Attributes") {
    wanted.refused.push_back({"PropertyValueTypeError", {value.type_name(), key}, "#/Attributes"});
  } else if (key == kApplyTime) {
    add_apply_time(value, wanted);
  } else if (!is_annotation(key)) {
    const bool is_known = std::ranges::find(kOtherBiosProperties, key) != std::end(kOtherBiosProperties);
    wanted.unchanged.push_back({is_known ? "PropertyNotWritable" : "PropertyUnknown",
                                {key.substr(0, 64)},
                                "#/" + key.substr(0, 64)});
  }
}

// Whether the process may make databases is one answer for all of its threads.
class CreationAllowed {
 public:
  explicit CreationAllowed(bool is_wanted) : is_wanted_(is_wanted) {
    if (is_wanted_) allow_creation(true);
  }
  ~CreationAllowed() {
    if (is_wanted_) allow_creation(false);
  }
  CreationAllowed(const CreationAllowed&) = delete;
  CreationAllowed& operator=(const CreationAllowed&) = delete;

 private:
  const bool is_wanted_;
};

std::vector<Message> refused_by_manager(const Wanted& wanted) {
  std::vector<Message> messages;
  for (size_t i = 0; i < wanted.entries.size(); ++i) {
    const uint32_t result = wanted.entries[i].Result;
    if (result == 0) continue;
    messages.push_back({"PropertyValueIncorrect",
                        {wanted.attributes[i], wanted.entries[i].PendingValue},
                        "#/Attributes/" + wanted.attributes[i]});
  }
  return messages;
}

// One after the other, because the library writes them so.
std::optional<Response> save(Wanted& wanted, bool may_create_properties) {
  static std::mutex saving;
  const std::lock_guard lock(saving);
  records::require_settled_settings();
  const CreationAllowed creation(may_create_properties);
  const int status =
      zymdb_save_pci_configSet_list(wanted.entries.data(), static_cast<unsigned>(wanted.entries.size()));
  if (status == ZYMDB_PCI_SETTING_BIOS_SET_FAIL) {
    const auto refused = refused_by_manager(wanted);
    return error_with(400, refused.empty() ? std::vector<Message>{{"OperationFailed"}} : refused);
  }
  if (status != ZYM_DB_STATUS_OK) throw DatabaseError("cannot save the settings", status);
  return {};
}

}  // namespace

ParsedBody parse_body(const Request& request) {
  if (!has_json(request)) return {.refusal = error_response(415)};
  // Deep nesting costs memory and stack wherever the value goes.
  const auto is_shallow = [](int depth, Json::parse_event_t, Json&) {
    if (depth > kDeepest) throw TooDeep();
    return true;
  };
  Json object;
  try {
    object = Json::parse(request.body, is_shallow);
  } catch (const TooDeep&) {
    return {.refusal = error_response(400)};
  } catch (const Json::exception&) {
    return {.refusal = error_with(400, {{"MalformedJSON"}})};
  }
  if (!object.is_object()) return {.refusal = error_response(400)};
  return {.object = std::move(object)};
}

Response log_in(Accounts& accounts, const Request& request) {
  const ParsedBody body = parse_body(request);
  if (body.refusal) return *body.refusal;
  const auto objections = login_objections(body.object);
  if (!objections.empty()) return error_with(400, objections);
  Login login;
  switch (accounts.log_in(*text_at(body.object, "UserName"), *text_at(body.object, "Password"), request.peer,
                          login)) {
    case LoginOutcome::kGranted:
      return granted(login);
    case LoginOutcome::kDenied:
      return error_with(403, {{"AccessForbidden"}});
    case LoginOutcome::kTooMany:
      return error_with(503, {{"SessionLimitExceeded"}});
    case LoginOutcome::kLater:
      return busy_response(503, kLoginRetrySeconds);
    default:
      return refused_login(request);
  }
}

SettingsOutcome save_settings(const Machine& machine, const Json& wanted_json, bool may_create_properties) {
  Wanted wanted;
  if (wanted_json.empty()) return {.refusal = error_with(400, {{"EmptyJSON"}})};
  for (const auto& [key, value] : wanted_json.items()) add_property(machine, key, value, wanted);
  if (!wanted.refused.empty()) return {.refusal = error_with(400, wanted.refused)};
  if (wanted.entries.empty()) {
    const std::vector<Message> nothing{{"NoOperation"}};
    return {.refusal = error_with(400, wanted.unchanged.empty() ? nothing : wanted.unchanged)};
  }
  return {.refusal = save(wanted, may_create_properties), .unchanged = std::move(wanted.unchanged)};
}

}  // namespace zymdb::service::redfish
