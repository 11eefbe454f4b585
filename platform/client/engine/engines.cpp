#include "client/engine/engines.h"

#include <array>

#include "client/engine/sqlite/engine.h"

namespace zymdb::client {

std::span<const Engine* const> engines() {
  static constexpr std::array kEngines = {&sqlite::kEngine};
  return kEngines;
}

}  // namespace zymdb::client
