// Work that must not touch this process.
#ifndef ZYMDB_SERVICE_PAGE_CHILD_PROCESS_H
#define ZYMDB_SERVICE_PAGE_CHILD_PROCESS_H

#include <chrono>
#include <functional>
#include <string>

namespace zymdb::service {

// What `work` returns in a copy of this process, which ends with it. Other threads of this process are not in
// the copy, and what they were about to do stays half done there: the work shares nothing with them but the
// database client, which knows of copies. Throws DatabaseError for what the work throws, and where it takes
// longer than `limit` or cannot be begun.
std::string output_of_child(const std::function<std::string()>& work, std::chrono::milliseconds limit);

}  // namespace zymdb::service

#endif
