#include "service/redfish/destinations.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "common/text.h"

namespace zymdb::service::redfish {
namespace {

constexpr size_t kLongestUrl = 1024;
constexpr size_t kLongestContext = 256;
constexpr size_t kMostHeaders = 16;
constexpr size_t kLongestHeaders = 4096;  // all names and values
constexpr size_t kLongestShown = 64;      // of what is refused

constexpr std::pair<const char*, AfterRetries> kPolicies[] = {
    {"SuspendRetries", AfterRetries::kSuspend},
    {"TerminateAfterRetries", AfterRetries::kTerminate},
};

// Properties with one value that can be: the one that they have anyway.
constexpr std::pair<const char*, const char*> kOnlyTexts[] = {
    {"Protocol", "Redfish"},
    {"SubscriptionType", "RedfishEvent"},
    {"EventFormatType", "Event"},
};
constexpr std::pair<const char*, bool> kOnlyFlags[] = {
    {"VerifyCertificate", true},
    {"IncludeOriginOfCondition", false},
    {"SendHeartbeat", false},
    {"SubordinateResources", false},
};
// Lists that choose among events: nothing, or all that there is.
constexpr std::pair<const char*, const char*> kLists[] = {
    {"RegistryPrefixes", "ResourceEvent"},
    {"EventTypes", "Other"},
    {"BackupDestinations", nullptr},
    {"ExcludeMessageIds", nullptr},
    {"ExcludeRegistryPrefixes", nullptr},
    {"MessageIds", nullptr},
    {"MetricReportDefinitions", nullptr},
    {"OriginResources", nullptr},
    {"ResourceTypes", nullptr},
    {"Severities", nullptr},
};
constexpr const char* kReadOnly[] = {
    "Actions", "Certificates", "ClientCertificates", "Description",         "HeartbeatIntervalMinutes",
    "Id",      "Name",         "OEMProtocol",        "OEMSubscriptionType", "Oem",
    "SNMP",    "Status",       "SyslogFilters"};

// What delivery itself says, and what would let a value speak for the connection.
constexpr const char* kOwnHeaders[] = {"connection", "content-length",    "content-type",  "expect",
                                       "host",       "keep-alive",        "odata-version", "te",
                                       "trailer",    "transfer-encoding", "upgrade"};

using Objections = std::vector<Message>;

std::string pointer_to(const std::string& name) {
  return "#/" + name.substr(0, kLongestShown);
}

std::string shown(const Json& value) {
  const std::string text = value.is_string() ? value.get<std::string>() : text_of(value);
  return std::string(cut(text, kLongestShown));
}

Message wrong_type(const std::string& name, const Json& value) {
  return {"PropertyValueTypeError", {value.type_name(), name}, pointer_to(name)};
}
Message not_in_list(const std::string& name, const Json& value) {
  return {"PropertyValueNotInList", {shown(value), name}, pointer_to(name)};
}
Message too_long(const std::string& name, const Json& value, size_t most) {
  return {"StringValueTooLong", {shown(value), std::to_string(most)}, pointer_to(name)};
}

template <class Table>
auto entry_of(const Table& table, const std::string& name) -> decltype(std::begin(table)) {
  return std::ranges::find_if(table, [&](const auto& each) { return name == each.first; });
}

void take_url(const std::string& name, const Json& value, Destination& to, Objections& objections) {
  if (!value.is_string())
    objections.push_back(wrong_type(name, value));
  else if (value.get_ref<const std::string&>().size() > kLongestUrl)
    objections.push_back(too_long(name, value, kLongestUrl));
  // A password within it is nothing to repeat.
  else if (to.url = value.get<std::string>(); !is_destination(to.url))
    objections.push_back({"PropertyValueError", {name}, pointer_to(name)});
}

std::optional<std::string> context_of(const Json& value, Objections& objections) {
  if (value.is_null()) return {};
  if (!value.is_string()) {
    objections.push_back(wrong_type("Context", value));
    return {};
  }
  if (value.get_ref<const std::string&>().size() > kLongestContext)
    objections.push_back(too_long("Context", value, kLongestContext));
  return value.get<std::string>();
}

AfterRetries policy_of(const Json& value, Objections& objections) {
  const auto* const policy =
      value.is_string() ? entry_of(kPolicies, value.get<std::string>()) : std::end(kPolicies);
  if (policy != std::end(kPolicies)) return policy->second;
  objections.push_back(value.is_string() ? not_in_list("DeliveryRetryPolicy", value)
                                         : wrong_type("DeliveryRetryPolicy", value));
  return {};
}

bool is_header_name(const std::string& name) {
  constexpr std::string_view kOthers = "!#$%&'*+-.^_`|~";
  const auto is_of_token = [&](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           kOthers.find(c) != std::string_view::npos;
  };
  return !name.empty() && std::ranges::all_of(name, is_of_token) &&
         std::ranges::find(kOwnHeaders, lower_case(name)) == std::end(kOwnHeaders);
}

bool is_header_value(const std::string& value) {
  return std::ranges::all_of(value, [](char c) { return c == '\t' || (c >= ' ' && c < '\x7f'); }) &&
         trimmed(value).size() == value.size();
}

// Nothing of them is repeated: they may be secrets.
bool are_headers(const Json& list, Fields& headers) {
  size_t size = 0;
  for (const Json& object : list) {
    if (!object.is_object()) return false;
    for (const auto& [name, value] : object.items()) {
      if (!value.is_string()) return false;
      headers.emplace_back(name, value.get<std::string>());
      size += headers.back().first.size() + headers.back().second.size();
      if (!is_header_name(headers.back().first) || !is_header_value(headers.back().second)) return false;
    }
  }
  return size <= kLongestHeaders;
}

void take_headers(const std::string& name, const Json& value, Destination& to, Objections& objections) {
  if (value.is_null()) return;
  if (!value.is_array())
    objections.push_back(wrong_type(name, value));
  else if (!are_headers(value, to.headers))
    objections.push_back({"PropertyValueError", {name}, pointer_to(name)});
  else if (to.headers.size() > kMostHeaders)
    objections.push_back({"ArraySizeTooLong", {name, std::to_string(kMostHeaders)}, pointer_to(name)});
}

void check_text(const std::string& name, const Json& value, const char* only, Objections& objections) {
  if (!value.is_string())
    objections.push_back(wrong_type(name, value));
  else if (value.get_ref<const std::string&>() != only)
    objections.push_back(not_in_list(name, value));
}

void check_flag(const std::string& name, const Json& value, bool only, Objections& objections) {
  if (!value.is_boolean())
    objections.push_back(wrong_type(name, value));
  else if (value.get<bool>() != only)
    objections.push_back(not_in_list(name, value));
}

void check_list(const std::string& name, const Json& value, const char* only, Objections& objections) {
  if (value.is_null()) return;
  if (!value.is_array()) {
    objections.push_back(wrong_type(name, value));
    return;
  }
  const auto can_be = [&](const Json& each) { return only != nullptr && each == only; };
  if (!std::ranges::all_of(value, can_be)) objections.push_back(not_in_list(name, value));
}

void take(const std::string& name, const Json& value, WantedDestination& wanted) {
  Objections& objections = wanted.objections;
  Destination& to = wanted.destination;
  const auto* const text = entry_of(kOnlyTexts, name);
  const auto* const flag = entry_of(kOnlyFlags, name);
  const auto* const list = entry_of(kLists, name);
  if (name == "Destination")
    take_url(name, value, to, objections);
  else if (name == "Context")
    to.context = context_of(value, objections);
  else if (name == "DeliveryRetryPolicy")
    to.after_retries = policy_of(value, objections);
  else if (name == "HttpHeaders")
    take_headers(name, value, to, objections);
  else if (text != std::end(kOnlyTexts))
    check_text(name, value, text->second, objections);
  else if (flag != std::end(kOnlyFlags))
    check_flag(name, value, flag->second, objections);
  else if (list != std::end(kLists))
    check_list(name, value, list->second, objections);
  else if (std::ranges::find(kReadOnly, name) != std::end(kReadOnly))
    objections.push_back({"PropertyNotWritable", {name}, pointer_to(name)});
  else
    objections.push_back({"PropertyUnknown", {name.substr(0, kLongestShown)}, pointer_to(name)});
}

// What a subscription keeps as it was made.
bool is_fixed(const std::string& name) {
  return name == "Destination" || name == "HttpHeaders" ||
         entry_of(kOnlyTexts, name) != std::end(kOnlyTexts) ||
         entry_of(kOnlyFlags, name) != std::end(kOnlyFlags) || entry_of(kLists, name) != std::end(kLists) ||
         std::ranges::find(kReadOnly, name) != std::end(kReadOnly);
}

bool is_annotation(const std::string& name) {
  return name.find('@') != std::string::npos;
}

}  // namespace

WantedDestination wanted_destination(const Json& wanted_json) {
  WantedDestination wanted;
  for (const char* const name : {"Destination", "Protocol"}) {
    if (!wanted_json.contains(name))
      wanted.objections.push_back({"CreateFailedMissingReqProperties", {name}, pointer_to(name)});
  }
  for (const auto& [name, value] : wanted_json.items())
    if (!is_annotation(name)) take(name, value, wanted);
  return wanted;
}

WantedChange wanted_change(const Json& wanted_json) {
  WantedChange wanted;
  for (const auto& [name, value] : wanted_json.items()) {
    if (name == "Context") {
      wanted.change.context = context_of(value, wanted.objections);
    } else if (name == "DeliveryRetryPolicy") {
      wanted.change.after_retries = policy_of(value, wanted.objections);
    } else if (!is_annotation(name)) {
      wanted.unchanged.push_back({is_fixed(name) ? "PropertyNotWritable" : "PropertyUnknown",
                                  {name.substr(0, kLongestShown)},
                                  pointer_to(name)});
    }
  }
  return wanted;
}

const char* name_of(AfterRetries after_retries) {
  for (const auto& [name, each] : kPolicies) {
    if (each == after_retries) return name;
  }
  return "";
}

}  // namespace zymdb::service::redfish
