#include "terminal/table.h"

#include <libsmartcols.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "common/csv.h"

namespace zymdb::tool {
namespace {

using records::Attention;
using records::Kind;
using records::Sheet;

struct TableRelease {
  void operator()(libscols_table* table) const { scols_unref_table(table); }
};
using Table = std::unique_ptr<libscols_table, TableRelease>;

struct TextRelease {
  void operator()(char* text) const { std::free(text); }
};

// The table library's calls fail for want of memory only.
template <class T>
T* require(T* made) {
  if (made == nullptr) throw std::bad_alloc();
  return made;
}

void require_ok(int result) {
  if (result != 0) throw std::bad_alloc();
}

const char* color_of(Attention attention) {
  switch (attention) {
    case Attention::kAbsent:
      return "\033[2m";
    case Attention::kWarning:
      return "\033[33m";
    case Attention::kNone:
      break;
  }
  return nullptr;
}

int flags_of(Kind kind) {
  switch (kind) {
    case Kind::kNumber:
      return SCOLS_FL_RIGHT;
    case Kind::kLongText:
      return SCOLS_FL_TRUNC;
    case Kind::kText:
      break;
  }
  return 0;
}

void add_columns(libscols_table* table, const std::vector<records::FieldInfo>& fields, bool tree) {
  for (size_t i = 0; i < fields.size(); ++i) {
    const int flags = tree && i == 0 ? SCOLS_FL_TREE : flags_of(fields[i].kind);
    require(scols_table_new_column(table, fields[i].heading, 0, flags));
  }
}

libscols_line* add_row(libscols_table* table, libscols_line* parent, const Sheet& sheet,
                       const std::vector<records::Cell>& row) {
  auto* line = require(scols_table_new_line(table, parent));
  for (size_t i = 0; i < row.size(); ++i) {
    auto* cell = require(scols_line_get_cell(line, i));
    require_ok(scols_cell_set_data(cell, text_of(sheet.fields[i], row[i].value).c_str()));
    require_ok(scols_cell_set_color(cell, color_of(row[i].attention)));
  }
  return line;
}

void add_rows(libscols_table* table, const Sheet& sheet, bool tree) {
  std::vector<libscols_line*> lines;
  for (size_t i = 0; i < sheet.rows.size(); ++i) {
    const auto parent = tree && i < sheet.parents.size() ? sheet.parents[i] : std::nullopt;
    lines.push_back(add_row(table, parent ? lines[*parent] : nullptr, sheet, sheet.rows[i]));
  }
}

std::string print(libscols_table* table) {
  char* text = nullptr;
  require_ok(scols_print_table_to_string(table, &text));
  const std::unique_ptr<char, TextRelease> owner(require(text));
  return std::string(text) + "\n";
}

}  // namespace

std::string render_table(const Sheet& sheet, const TableStyle& style) {
  const bool empty = sheet.rows.empty();
  if (empty && !style.headings) return {};
  const Table table(require(scols_new_table()));
  scols_table_enable_noheadings(table.get(), style.headings ? 0 : 1);
  scols_table_enable_colors(table.get(), style.colors ? 1 : 0);
  add_columns(table.get(), sheet.fields, style.tree);
  add_rows(table.get(), sheet, style.tree);
  // A table without lines would be printed without its headings: give it a blank line, and take that away.
  if (empty) add_row(table.get(), nullptr, sheet, {});
  auto text = print(table.get());
  if (empty) text.erase(text.find('\n') + 1);
  return text;
}

std::string render_csv(const Sheet& sheet, bool headings) {
  std::vector<std::string> fields;
  for (const auto& field : sheet.fields) fields.emplace_back(field.key);
  std::string text = headings ? csv_row(fields) : "";
  for (const auto& row : sheet.rows) {
    for (size_t i = 0; i < row.size(); ++i) fields[i] = text_of(sheet.fields[i], row[i].value);
    text += csv_row(fields);
  }
  return text;
}

std::string render_pairs(const Sheet& sheet) {
  if (sheet.rows.empty()) return {};
  const Table table(require(scols_new_table()));
  require_ok(scols_table_enable_export(table.get(), 1));
  for (const auto& field : sheet.fields) require(scols_table_new_column(table.get(), field.key, 0, 0));
  add_rows(table.get(), sheet, false);
  return print(table.get());
}

}  // namespace zymdb::tool
