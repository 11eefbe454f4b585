#include "service/page/generation_stream.h"

#include "common/client_extensions.h"

namespace zymdb::service {
namespace {

// So that a connection that broke is noticed.
constexpr std::chrono::seconds kSignOfLife{15};
// Who cannot open the inventory says so in the log at each attempt.
constexpr std::chrono::seconds kPauseWithout{5};

std::string event_of(std::optional<uint64_t> generation) {
  return "event: generation\ndata: {\"generation\":" + (generation ? std::to_string(*generation) : "null") +
         "}\n\n";
}

}  // namespace

std::string GenerationStream::take() {
  const auto now = Clock::now();
  if (now < next_look_) return {};
  const auto generation = inventory_generation();
  if (!generation) next_look_ = now + kPauseWithout;
  if (!has_told_ || generation != told_) {
    has_told_ = true;
    told_ = generation;
    last_sign_ = now;
    return event_of(generation);
  }
  if (now - last_sign_ < kSignOfLife) return {};
  last_sign_ = now;
  return ": still here\n\n";
}

}  // namespace zymdb::service
