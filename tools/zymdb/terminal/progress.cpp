#include "terminal/progress.h"

#include <algorithm>
#include <string>
#include <utility>

namespace zymdb::tool {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(500);
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr std::string_view kErase = "\r\033[K";
constexpr size_t kWidest = 60;

// "[####    ]  50%", `width` characters.
std::string bar(size_t done, size_t total, size_t width) {
  constexpr size_t kAround = 7;  // brackets, blank and percentage
  const size_t inner = width > kAround ? width - kAround : 0;
  const size_t filled = inner * done / total;
  auto percent = std::to_string(100 * done / total);
  percent.insert(0, 3 - percent.size(), ' ');
  return "[" + std::string(filled, '#') + std::string(inner - filled, ' ') + "] " + percent + "%";
}

}  // namespace

Progress::Progress(Sink sink, size_t width, std::function<Clock::time_point()> now)
    : sink_(std::move(sink)),
      width_(std::min(width, kWidest)),
      now_(std::move(now)),
      next_(now_() + kPatience) {}

void Progress::update(size_t done, size_t total) {
  const auto now = now_();
  if (total == 0 || now < next_) return;
  next_ = now + kInterval;
  drawn_ = true;
  sink_(std::string(kErase) + bar(std::min(done, total), total, width_));
}

void Progress::clear() {
  if (!drawn_) return;
  drawn_ = false;
  sink_(kErase);
}

}  // namespace zymdb::tool
