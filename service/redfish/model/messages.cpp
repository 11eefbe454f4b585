#include "service/redfish/model/messages.h"

#include <algorithm>
#include <iterator>

#include "service/redfish/model/schemas.h"

namespace zymdb::service::redfish {
namespace {

constexpr RegistryMessage kMessages[] = {
    {"Success", "OK", "The request completed successfully.", "None."},
    {"GeneralError", "Critical",
     "A general error has occurred.  See Resolution for information on how to resolve the error, or "
     "@Message.ExtendedInfo if Resolution is not provided.",
     "None."},
    {"NoOperation", "Warning",
     "The request body submitted contain no data to act upon and no changes to the resource took place.",
     "Add properties in the JSON object and resubmit the request."},
    {"PropertyUnknown", "Warning", "The property %1 is not in the list of valid properties for the resource.",
     "Remove the unknown property from the request body and resubmit the request if the operation failed."},
    {"PropertyValueTypeError", "Warning",
     "The value '%1' for the property %2 is not a type that the property can accept.",
     "Correct the value for the property in the request body and resubmit the request if the operation "
     "failed."},
    {"PropertyValueFormatError", "Warning",
     "The value '%1' for the property %2 is not a format that the property can accept.",
     "Correct the value for the property in the request body and resubmit the request if the operation "
     "failed."},
    {"PropertyValueNotInList", "Warning",
     "The value '%1' for the property %2 is not in the list of acceptable values.",
     "Choose a value from the enumeration list that the implementation can support and resubmit the request "
     "if the operation failed."},
    {"PropertyValueOutOfRange", "Warning",
     "The value '%1' for the property %2 is not in the supported range of acceptable values.",
     "Correct the value for the property in the request body and resubmit the request if the operation "
     "failed."},
    {"PropertyValueError", "Warning", "The value provided for the property %1 is not valid.",
     "Correct the value for the property in the request body and resubmit the request if the operation "
     "failed."},
    {"StringValueTooLong", "Warning", "The string '%1' exceeds the length limit %2.",
     "Resubmit the request with an appropriate string length."},
    {"ArraySizeTooLong", "Warning", "The array provided for property %1 exceeds the size limit %2.",
     "Resubmit the request with an appropriate array size."},
    {"PropertyNotWritable", "Warning",
     "The property %1 is a read-only property and cannot be assigned a value.",
     "Remove the property from the request body and resubmit the request if the operation failed."},
    {"PropertyMissing", "Warning",
     "The property %1 is a required property and must be included in the request.",
     "Ensure that the property is in the request body and has a valid value and resubmit the request if the "
     "operation failed."},
    {"MalformedJSON", "Critical",
     "The request body submitted was malformed JSON and could not be parsed by the receiving service.",
     "Ensure that the request body is valid JSON and resubmit the request."},
    {"EmptyJSON", "Warning",
     "The request body submitted contained an empty JSON object and the service is unable to process it.",
     "Add properties in the JSON object and resubmit the request."},
    {"QueryParameterValueTypeError", "Warning",
     "The value '%1' for the query parameter %2 is not a type that the parameter can accept.",
     "Correct the value for the query parameter in the request and resubmit the request if the operation "
     "failed."},
    {"QueryParameterValueFormatError", "Warning",
     "The value '%1' for the parameter %2 is not a format that the parameter can accept.",
     "Correct the value for the query parameter in the request and resubmit the request if the operation "
     "failed."},
    {"QueryParameterValueError", "Warning", "The value for the parameter %1 is invalid.",
     "Correct the value for the query parameter in the request and resubmit the request if the operation "
     "failed."},
    {"QueryParameterOutOfRange", "Warning", "The value '%1' for the query parameter %2 is out of range %3.",
     "Reduce the value for the query parameter to a value that is within range, such as a start or count "
     "value that is within bounds of the number of resources in a collection or a page number that is within "
     "the range of valid pages."},
    {"QueryParameterUnsupported", "Warning", "Query parameter '%1' is not supported.",
     "Correct or remove the query parameter and resubmit the request."},
    {"QueryNotSupportedOnResource", "Warning", "Querying is not supported on the requested resource.",
     "Remove the query parameters and resubmit the request if the operation failed."},
    {"QueryNotSupportedOnOperation", "Warning", "Querying is not supported with the requested operation.",
     "Remove the query parameters and resubmit the request if the operation failed."},
    {"QueryCombinationInvalid", "Warning",
     "Two or more query parameters in the request cannot be used together.",
     "Remove one or more of the query parameters and resubmit the request if the operation failed."},
    {"SessionLimitExceeded", "Critical",
     "The session establishment failed due to the number of simultaneous sessions exceeding the limit of the "
     "implementation.",
     "Reduce the number of other sessions before trying to establish the session or increase the limit of "
     "simultaneous sessions, if supported."},
    {"EventSubscriptionLimitExceeded", "Critical",
     "The event subscription failed due to the number of simultaneous subscriptions exceeding the limit of "
     "the implementation.",
     "Reduce the number of other subscriptions before trying to establish the event subscription or increase "
     "the limit of simultaneous subscriptions, if supported."},
    {"CreateFailedMissingReqProperties", "Critical",
     "The create operation failed because the required property %1 was missing from the request.",
     "Correct the body to include the required property with a valid value and resubmit the request if the "
     "operation failed."},
    {"CreateLimitReachedForResource", "Critical",
     "The create operation failed because the resource has reached the limit of possible resources.",
     "Either delete resources and resubmit the request if the operation failed or do not resubmit the "
     "request."},
    {"PayloadTooLarge", "Critical", "The supplied payload exceeds the maximum size supported by the service.",
     "Check that the supplied payload is correct and supported by this service."},
    {"InsufficientStorage", "Critical", "Insufficient storage or memory available to complete the request.",
     "Increase the free storage space available to the service and resubmit the request."},
    {"NoValidSession", "Critical", "There is no valid session established with the implementation.",
     "Establish a session before attempting any operations."},
    {"InsufficientPrivilege", "Critical",
     "There are insufficient privileges for the account or credentials associated with the current session "
     "to perform the requested operation.",
     "Either abandon the operation or change the associated access rights and resubmit the request if the "
     "operation failed."},
    {"InternalError", "Critical",
     "The request failed due to an internal service error.  The service is still operational.",
     "Resubmit the request.  If the problem persists, consider resetting the service."},
    {"UnrecognizedRequestBody", "Warning",
     "The service detected a malformed request body that it was unable to interpret.",
     "Correct the request body and resubmit the request if it failed."},
    {"ResourceMissingAtURI", "Critical", "The resource at the URI '%1' was not found.",
     "Place a valid resource at the URI or correct the URI and resubmit the request."},
    {"ServiceTemporarilyUnavailable", "Critical",
     "The service is temporarily unavailable.  Retry in %1 seconds.",
     "Wait for the indicated retry duration and retry the operation."},
    {"PreconditionFailed", "Critical",
     "The ETag supplied did not match the ETag required to change this resource.",
     "Try the operation again using the appropriate ETag."},
    {"PreconditionRequired", "Critical",
     "A precondition header or annotation is required to change this resource.",
     "Try the operation again using an If-Match or If-None-Match header and appropriate ETag."},
    {"HeaderMissing", "Critical", "Required header '%1' is missing in the request.",
     "Resubmit the request with the required request header."},
    {"HeaderInvalid", "Critical", "Header '%1' is invalid.",
     "Resubmit the request with a valid request header."},
    {"OperationFailed", "Warning",
     "An error occurred internal to the service as part of the overall request.  Partial results may have "
     "been returned.",
     "Resubmit the request.  If the problem persists, consider resetting the service or provider."},
    {"OperationNotAllowed", "Critical", "The HTTP method is not allowed on this resource.", "None."},
    {"EventBufferExceeded", "Warning",
     "Undelivered events may have been lost due to exceeding the event buffer.", "None."},
    {"AccessUnauthorized", "Critical", "Unauthorized.", "Resubmit the request with valid credentials."},
    {"AccessForbidden", "Critical", "Forbidden.",
     "Resubmit the request with credentials that contain the necessary privileges to perform the requested "
     "operation."},
    {"PropertyValueIncorrect", "Warning",
     "The property '%1' with the requested value of '%2' could not be written because the value is not "
     "acceptable for the property.",
     "None."},
};

const RegistryMessage& message_of(std::string_view key) {
  const auto* const found = std::ranges::find(kMessages, key, &RegistryMessage::key);
  return found != std::end(kMessages) ? *found : message_of("GeneralError");
}

std::string filled(std::string_view text, const std::vector<std::string>& arguments) {
  std::string filled;
  for (size_t at = 0; at < text.size(); ++at) {
    const size_t number =
        at + 1 < text.size() ? static_cast<size_t>(text[at + 1]) - size_t{'1'} : arguments.size();
    if (text[at] != '%' || number >= arguments.size()) {
      filled += text[at];
      continue;
    }
    filled += arguments[number];
    ++at;
  }
  return filled;
}

}  // namespace

std::span<const RegistryMessage> base_messages() {
  return kMessages;
}

std::string message_id(const Message& message) {
  const std::string_view registry = kBaseRegistry;
  return std::string(registry.substr(0, registry.rfind('.') + 1)) + std::string(message_of(message.key).key);
}

std::string text_of(const Message& message) {
  return filled(message_of(message.key).text, message.arguments);
}

Json json_of(const Message& message) {
  const RegistryMessage& published = message_of(message.key);
  Json json{{"@odata.type", type_of(*schema("Message"))},
            {"MessageId", message_id(message)},
            {"Message", text_of(message)},
            {"MessageArgs", message.arguments},
            {"MessageSeverity", published.severity},
            {"Resolution", published.resolution}};
  if (!message.property.empty()) json["RelatedProperties"] = Json::array({message.property});
  return json;
}

}  // namespace zymdb::service::redfish
