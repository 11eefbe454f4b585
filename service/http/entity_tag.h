// Answers that a client has already.
#ifndef ZYMDB_SERVICE_HTTP_ENTITY_TAG_H
#define ZYMDB_SERVICE_HTTP_ENTITY_TAG_H

#include <string_view>

#include "service/http/message.h"

namespace zymdb::service {

// Whether the client has what bears the tag: nothing but that is to be told.
bool is_known(const Request& request, std::string_view tag);

// Whether If-None-Match names the tag. Tags that differ in strength alone name the same to somebody who only
// wants to know whether to read again.
bool names_tag(std::string_view if_none_match, std::string_view tag);

}  // namespace zymdb::service

#endif
