#include "service/page/generation_stream.h"

#include <thread>

#include "common/client_extensions.h"

namespace zymdb::service {
namespace {

constexpr std::chrono::milliseconds kMoment{250};
// So that a connection that broke is noticed.
constexpr std::chrono::seconds kSignOfLife{15};

std::string event_of(std::optional<uint64_t> generation) {
  return "event: generation\ndata: {\"generation\":" + (generation ? std::to_string(*generation) : "null") + "}\n\n";
}

}  // namespace

std::string GenerationStream::take() {
  if (has_told_) std::this_thread::sleep_for(kMoment);
  const auto generation = inventory_generation();
  const auto now = Clock::now();
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
