#include "collect/record/machine_copy.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMostLinks = 40;
constexpr const char* kBeside[] = {"proc", "etc", "driver-answers"};

}  // namespace

void CopyMaker::read_file(const std::string& path, const std::optional<std::string>& content, int error) {
  const auto place = place_behind_links(path);
  if (!place) return;
  if (content) copy_.files[*place] = *content;
  if (error == EACCES || error == EPERM) copy_.forbidden.push_back(path);
}

void CopyMaker::listed(const fs::path& folder, const std::vector<fs::path>& entries) {
  if (const auto place = place_behind_links(folder)) copy_.folders.insert(*place);
  for (const auto& entry : entries) add_what_is_at(entry, false);
}

void CopyMaker::looked_at(const fs::path& path) {
  add_what_is_at(path, true);
}

// Of a file that is only looked for it matters that it is there.
void CopyMaker::add_what_is_at(const fs::path& path, bool with_files) {
  const auto place = place_behind_links(path);
  std::error_code error;
  if (!place) return;
  if (fs::is_directory(path, error)) {
    copy_.folders.insert(*place);
  } else if (with_files && fs::exists(path, error)) {
    copy_.files.emplace(*place, "");
  }
}

// Nothing for what is no part of the copy.
std::optional<std::string> CopyMaker::place_of(const fs::path& path) const {
  const auto starts_with = [&path](const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
  };
  if (starts_with(root_))
    return (fs::path("sys") / path.lexically_relative(root_)).lexically_normal().string();
  for (const char* name : kBeside) {
    const fs::path folder = root_.parent_path() / name;
    if (starts_with(folder))
      return (fs::path(name) / path.lexically_relative(folder)).lexically_normal().string();
  }
  return std::nullopt;
}

std::optional<std::string> CopyMaker::place_behind_links(const fs::path& path) {
  const auto real = follow(path.lexically_normal(), 0);
  auto place = real ? place_of(*real) : std::nullopt;
  if (place && place->ends_with("/.")) place->erase(place->size() - 2);
  if (place && place->ends_with('/')) place->pop_back();
  return place;
}

// The path without links, each of which is copied on the way. Nothing where one leaves the copy.
std::optional<fs::path> CopyMaker::follow(const fs::path& path, unsigned links) {
  fs::path real = path.root_path();
  for (const auto& part : path.relative_path()) {
    if (part.empty()) continue;
    real /= part;
    std::error_code error;
    if (!place_of(real) || !fs::is_symlink(real, error)) continue;
    const auto followed = follow_link(real, links + 1);
    if (!followed) return std::nullopt;
    real = *followed;
  }
  return real;
}

std::optional<fs::path> CopyMaker::follow_link(const fs::path& link, unsigned links) {
  std::error_code error;
  const fs::path target = (link.parent_path() / fs::read_symlink(link, error)).lexically_normal();
  const auto place = place_of(target);
  if (error || links > kMostLinks || !place) return std::nullopt;
  const fs::path from = *place_of(link);
  copy_.links[from.string()] = fs::path(*place).lexically_relative(from.parent_path()).string();
  return follow(target, links);
}

}  // namespace zymdb::collect
