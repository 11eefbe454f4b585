// Every filter and statement that the library sends must work as it stands. The corpus holds one a file: the
// table's name on the first line, empty for a complete statement, then the text.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/client_fixture.h"

namespace {

struct Sample {
  std::string name;
  std::string table;
  std::string text;
};

std::vector<Sample> corpus() {
  std::vector<Sample> samples;
  for (const auto& entry : std::filesystem::directory_iterator(ZYMDB_DIALECT_CORPUS)) {
    std::ifstream file(entry.path());
    Sample sample{entry.path().filename(), "", ""};
    std::getline(file, sample.table);
    sample.text.assign(std::istreambuf_iterator<char>(file), {});
    samples.push_back(std::move(sample));
  }
  std::sort(samples.begin(), samples.end(), [](const Sample& a, const Sample& b) { return a.name < b.name; });
  return samples;
}

class FilterCorpusTest : public ClientTest {
 protected:
  int run(const Sample& sample) {
    zym_db_result_t* rows = nullptr;
    const _zym_db_param_t params[] = {u32(1), u32(2)};
    const bool property = sample.table == "propertiesDCTbl";
    _zym_db_handle_t* const properties =
        property ? zym_db_open("localhost", "root", "", "propertiesdb", 0) : nullptr;
    _zym_db_handle_t* const database = property ? properties : handle();
    const int status =
        sample.table.empty()
            ? zym_db_raw_query(database, sample.text.c_str(), static_cast<int>(sample.text.size()) + 1, &rows)
            : zym_db_query(database, sample.table.c_str(), nullptr, 0, sample.text.c_str(), params, 2, 0,
                           &rows);
    Rows(rows).reset();
    if (property) zym_db_close(properties);
    return status;
  }
};

TEST_F(FilterCorpusTest, EveryFilterOfTheLibraryWorksAsItStands) {
  const std::vector<Sample> samples = corpus();
  ASSERT_GE(samples.size(), 50U);
  for (const Sample& sample : samples) EXPECT_EQ(run(sample), 0) << sample.name << ": " << sample.text;
}

TEST_F(FilterCorpusTest, EveryFilterFitsAChangeExceptThoseThatGroup) {
  for (const Sample& sample : corpus()) {
    if (sample.table.empty() || sample.table == "propertiesDCTbl") continue;
    const _zym_db_param_t params[] = {u32(1)};
    const int expected = sample.text.find("GROUP") == std::string::npos ? 0 : ZYM_DB_STATUS_ERROR;
    EXPECT_EQ(zym_db_delete(handle(), sample.table.c_str(), sample.text.c_str(), params, 1, nullptr),
              expected)
        << sample.name << ": " << sample.text;
  }
}

}  // namespace
