// News of the inventory as a stream of events: its generation, at once and whenever there is another.
#ifndef ZYMDB_SERVICE_PAGE_GENERATION_STREAM_H
#define ZYMDB_SERVICE_PAGE_GENERATION_STREAM_H

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "service/http/message.h"

namespace zymdb::service {

class GenerationStream : public Stream {
 public:
  // How long one goes on. Who listens asks again, and is asked again who he is.
  static constexpr std::chrono::minutes kLongest{10};

  // `place` is held for as long as the stream lives.
  explicit GenerationStream(std::shared_ptr<void> place) : place_(std::move(place)) {}

  std::string take() override;
  bool is_over() const override { return Clock::now() >= end_; }

 private:
  using Clock = std::chrono::steady_clock;

  std::shared_ptr<void> place_;
  Clock::time_point end_ = Clock::now() + kLongest;
  Clock::time_point last_sign_ = Clock::now();
  Clock::time_point next_look_ = Clock::now();
  bool has_told_ = false;
  std::optional<uint64_t> told_;
};

}  // namespace zymdb::service

#endif
