// Values as the journal writes them: JSON's own numbers and texts, and forms for what it has none for.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_JSON_TEXT_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_JSON_TEXT_H

#include <string>
#include <string_view>

namespace zymdb::client {

// A text in quotes, whatever its bytes.
std::string json_text(std::string_view text);

// {"real": "…"}; {"blob": "…"} in hexadecimal; a text, or {"bytes": "…"} where it is no UTF-8.
std::string json_of_real(double value);
std::string json_of_blob(std::string_view bytes);
std::string json_of_text(std::string_view text);

}  // namespace zymdb::client

#endif
