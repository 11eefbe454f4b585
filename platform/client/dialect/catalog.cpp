#include "client/dialect/catalog.h"

#include <atomic>

namespace zymdb::client {
namespace {

std::atomic<uint64_t> last_number{0};

}  // namespace

// FNV-1a; one bit makes letters of either case alike, and a few other characters, which does no harm.
size_t WordHash::operator()(std::string_view word) const {
  uint64_t hash = 14695981039346656037U;
  for (const char c : word) hash = (hash ^ static_cast<unsigned char>(c | 0x20)) * 1099511628211U;
  return static_cast<size_t>(hash);
}

void Table::add_column(Column column) {
  places_.emplace(column.name, columns_.size());
  columns_.push_back(std::move(column));
}

const Column* Table::column(std::string_view word) const {
  const auto place = places_.find(word);
  return place == places_.end() ? nullptr : &columns_[place->second];
}

Catalog::Catalog(const Flavour& flavour) : flavour_(&flavour), number_(++last_number) {}

void Catalog::add_column(const std::string& table, std::string column, bool is_text, bool is_bytes) {
  tables_.try_emplace(table, table).first->second.add_column({std::move(column), is_text, is_bytes});
}

const Table* Catalog::table(std::string_view word) const {
  const auto found = tables_.find(word);
  return found == tables_.end() ? nullptr : &found->second;
}

}  // namespace zymdb::client
