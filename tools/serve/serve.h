// The service of the inventory over HTTP, from its options to its end.
#ifndef ZYMDB_SERVE_SERVE_H
#define ZYMDB_SERVE_SERVE_H

#include <string>

namespace zymdb::tool {

struct ServeOptions {
  std::string listen = {};
  std::string certificate = {};  // files, or nothing
  std::string key = {};
  std::string names = {};  // the file of PCI devices' names
  bool anonymous_reads = false;
};

// Returns when it was interrupted. Throws Failure.
void serve(const ServeOptions& options);

}  // namespace zymdb::tool

#endif
