#include "collect/write/port_samples.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "common/source_file.h"

namespace zymdb::collect {
namespace {

constexpr char kFolder[] = "/run/zymdb";
constexpr char kSuffix[] = ".counters";

std::string variable(const char* name, const char* otherwise) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : otherwise;
}

// As the name of a file, of which no two are the same.
std::string escaped(std::string_view address) {
  constexpr char kHexadecimal[] = "0123456789ABCDEF";
  std::string name;
  for (const char c : address) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '/' || c == '%')
      name.append({'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]});
    else
      name.push_back(c);
  }
  return name;
}

bool write(const std::string& file, const CounterSamples& samples) {
  std::ofstream out(file);
  for (const auto& [port, sample] : samples) {
    out << port.first.value << ' ' << port.second << ' ' << sample.counters.sent << ' '
        << sample.counters.received << ' ' << sample.taken_at << '\n';
  }
  return out.flush().good();
}

}  // namespace

std::string sample_file() {
  return variable("ZYMDB_COUNTERS", kFolder) + "/" + escaped(variable("ZYMDB_INVENTORY", "")) + kSuffix;
}

CounterSamples read_samples(const std::string& file) {
  CounterSamples samples;
  std::istringstream lines(read_attribute(file).value_or(""));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    uint32_t function = 0;
    unsigned index = 0;
    CounterSample sample;
    if (fields >> function >> index >> sample.counters.sent >> sample.counters.received >> sample.taken_at)
      samples[{FunctionKey(function), index}] = sample;
  }
  return samples;
}

void save_samples(const std::string& file, const CounterSamples& samples) {
  const std::string draft = file + ".new";
  std::error_code ignored;
  if (write(draft, samples) && std::rename(draft.c_str(), file.c_str()) == 0) return;
  std::filesystem::remove(draft, ignored);
  std::filesystem::remove(file, ignored);
}

}  // namespace zymdb::collect
