#include "service/redfish/errors.h"

#include <algorithm>
#include <iterator>

#include "service/redfish/model/json.h"

namespace zymdb::service::redfish {
namespace {

// What a status says where nothing better is known, and whether its message takes what the error is about.
struct StatusMessage {
  int status;
  std::string_view key;
  std::string_view otherwise = {};  // the argument where none was given; empty: the message has none
};
constexpr StatusMessage kStatuses[] = {
    {400, "UnrecognizedRequestBody"},
    {401, "NoValidSession"},
    {403, "InsufficientPrivilege"},
    {404, "ResourceMissingAtURI", "/"},
    {405, "OperationNotAllowed"},
    {406, "HeaderInvalid", "Accept"},
    {408, "OperationFailed"},
    {411, "HeaderMissing", "Content-Length"},
    {412, "PreconditionFailed"},
    {413, "PayloadTooLarge"},
    {414, "PayloadTooLarge"},
    {415, "HeaderInvalid", "Content-Type"},
    {428, "PreconditionRequired"},
    {429, "ServiceTemporarilyUnavailable", "5"},
    {431, "PayloadTooLarge"},
    {501, "OperationNotAllowed"},
    {503, "ServiceTemporarilyUnavailable", "5"},
    {507, "InsufficientStorage"},
};

}  // namespace

Response error_with(int status, const std::vector<Message>& messages) {
  Json details = Json::array();
  for (const Message& message : messages) details.push_back(json_of(message));
  // Several messages have a common one above them, which says to read on.
  Message common{"GeneralError"};
  if (messages.size() == 1) common = messages.front();
  const Json body{{"error",
                   {{"code", message_id(common)},
                    {"message", text_of(common)},
                    {"@Message.ExtendedInfo", std::move(details)}}}};
  Response response = Response::of(status, kJsonType, text_of(body));
  response.headers.emplace_back("OData-Version", "4.0");
  response.headers.emplace_back("Cache-Control", "no-store");
  return response;
}

Response error_response(int status, std::string_view argument) {
  const auto* const known = std::ranges::find(kStatuses, status, &StatusMessage::status);
  if (known == std::end(kStatuses))
    return error_with(status, {{status < 500 ? "GeneralError" : "InternalError"}});
  Message message{known->key};
  if (!known->otherwise.empty())
    message.arguments = {std::string(argument.empty() ? known->otherwise : argument)};
  return error_with(status, std::vector{message});
}

Response busy_response(int status, unsigned seconds) {
  const std::string text = std::to_string(seconds);
  Response response = error_response(status, text);
  response.headers.emplace_back("Retry-After", text);
  return response;
}

}  // namespace zymdb::service::redfish
