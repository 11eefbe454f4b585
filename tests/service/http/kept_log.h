// What the service tells whoever runs it, kept.
#ifndef ZYMDB_TESTS_SERVICE_HTTP_KEPT_LOG_H
#define ZYMDB_TESTS_SERVICE_HTTP_KEPT_LOG_H

#include <mutex>
#include <string>
#include <vector>

#include "service/http/log.h"

namespace zymdb::service {

class KeptLog {
 public:
  Log log() {
    return [this](int, const std::string& line) {
      const std::lock_guard lock(mutex_);
      lines_.push_back(line);
    };
  }
  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace zymdb::service

#endif
