#include "tool/listing_case.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace zymdb::test {
namespace {

constexpr int kFormatVersion = 2;

void add_declared_fields(const std::string& header, const std::string& record,
                         std::vector<std::string>& fields) {
  const auto begin = header.find("struct " + record + " {");
  EXPECT_NE(begin, std::string::npos) << record;
  const auto declaration = header.substr(begin, header.find("};", begin) - begin);
  const std::regex member(R"((?:char|u?int\d+_t) (\w+)(?:\[\d+\])?;)");
  for (std::sregex_iterator match(declaration.begin(), declaration.end(), member), end; match != end; ++match)
    fields.push_back((*match)[1]);
}

}  // namespace

const ListingCase& listing(const std::string& name) {
  const auto* const found = std::ranges::find(kListings, name, &ListingCase::name);
  if (found == std::end(kListings)) throw std::out_of_range(name);
  return *found;
}

std::vector<std::string> declared_fields(const ListingCase& listing) {
  std::vector<std::string> fields;
  if (listing.header.empty()) return fields;
  const auto header = read_file(std::string(ZYMDB_SOURCE_DIR "/include/") + listing.header);
  for (const auto& record : listing.records) add_declared_fields(header, record, fields);
  return fields;
}

std::vector<std::string> headings(const Workplace& workplace, const ListingCase& listing) {
  const auto outcome = workplace.tool({"show", listing.name, "--columns", "all"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  std::istringstream line(lines_of(outcome.out).at(0));
  std::vector<std::string> result;
  for (std::string heading; line >> heading;) result.push_back(heading);
  return result;
}

std::vector<std::string> column(const Workplace& workplace, const ListingCase& listing,
                                const std::string& name) {
  const auto outcome = workplace.tool({"show", listing.name, "--columns", name});
  EXPECT_EQ(outcome.status, 0) << outcome;
  auto cells = lines_of(outcome.out);
  cells.erase(cells.begin());
  for (auto& cell : cells) cell = stripped(cell);
  return cells;
}

Json records(const Workplace& workplace, const ListingCase& listing) {
  const auto outcome = workplace.tool({"show", listing.name, "--json"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  auto document = Json::parse(outcome.out);
  EXPECT_EQ(document.size(), 2u);
  EXPECT_EQ(document.begin().key(), "format_version");
  EXPECT_EQ(document.at("format_version"), kFormatVersion);
  return document.at(listing.name);
}

std::vector<std::string> keys_of(const Json& row) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : row.items()) keys.push_back(key);
  return keys;
}

bool shows(const std::string& cell, const Json& value) {
  if (value.is_null()) return cell.empty();
  if (value.is_string()) return cell == stripped(value.get<std::string>());
  if (value < 0) return cell == value.dump();
  size_t used = 0;
  const int base = cell.starts_with("0x") ? 16 : 10;
  return !cell.empty() && std::stoull(cell, &used, base) == value.get<uint64_t>() && used == cell.size();
}

}  // namespace zymdb::test
