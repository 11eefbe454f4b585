// The files of the page, as they were when the program was built.
#ifndef ZYMDB_SERVICE_PAGE_ASSETS_H
#define ZYMDB_SERVICE_PAGE_ASSETS_H

#include <cstddef>
#include <span>

namespace zymdb::service {

struct Asset {
  const char* path;  // of the request
  const char* type;
  const unsigned char* gzip;  // the content, compressed: it is kept in no other form
  size_t size;
};

std::span<const Asset> page_assets();

}  // namespace zymdb::service

#endif
