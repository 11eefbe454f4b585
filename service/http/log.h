// Where the service tells what whoever runs it should know.
#ifndef ZYMDB_SERVICE_HTTP_LOG_H
#define ZYMDB_SERVICE_HTTP_LOG_H

#include <functional>
#include <string>

namespace zymdb::service {

// One line, and how urgent it is, as the system log has it (LOG_WARNING). Called on any thread.
using Log = std::function<void(int priority, const std::string& line)>;

}  // namespace zymdb::service

#endif
