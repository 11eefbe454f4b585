#include "client/engine/creation.h"

#include <atomic>

namespace zymdb::client {
namespace {

constinit std::atomic<bool> is_allowed{true};

}  // namespace

void allow_creation(bool allowed) {
  is_allowed = allowed;
}

bool creation_is_allowed() {
  return is_allowed;
}

}  // namespace zymdb::client
