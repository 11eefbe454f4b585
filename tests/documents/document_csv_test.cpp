// Documents as comma-separated values.
#include "documents/document_csv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "documents/documents.h"

namespace zymdb::documents {
namespace {

using testing::SizeIs;

constexpr char kHeadings[] = "Place,Serial,Model,Size,Health,Load,Row,Detail,Firmware\r\n";

std::string content(const std::vector<Module>& modules) {
  const auto files = to_csv(document(modules));
  EXPECT_THAT(files, SizeIs(1));
  EXPECT_EQ(files.front().name, "modules.csv");
  return files.front().content;
}

TEST(DocumentCsv, OfNoPartsHasTheHeadingsAlone) {
  EXPECT_EQ(content({}), kHeadings);
}

TEST(DocumentCsv, HasALineForEachPart) {
  EXPECT_EQ(content({{}, {.place = "A2", .load = UINT64_MAX}}),
            std::string(kHeadings) +
                "A1,s1,m1,32 GiB,ok,0,1,d,\r\nA2,s1,m1,32 GiB,ok,18446744073709551615,1,d,\r\n");
}

TEST(DocumentCsv, HasNothingForWhatNobodyKnows) {
  EXPECT_EQ(content({{.place = "", .detail = ""}}), std::string(kHeadings) + ",s1,m1,32 GiB,ok,0,1,,\r\n");
}

TEST(DocumentCsv, KeepsTextsWholeAndAsUtf8) {
  EXPECT_EQ(content({{.place = "a,b", .serial = "a\nb", .model = "\"", .health = "\xff"}}),
            std::string(kHeadings) + "\"a,b\",\"a\nb\",\"\"\"\",32 GiB,\xEF\xBF\xBD,0,1,d,\r\n");
}

TEST(DocumentCsv, KeepsTheSign) {
  Document document = zymdb::documents::document({{}});
  document.classes.front().parts.front()[5] = int64_t{-7};
  EXPECT_THAT(to_csv(document).front().content, testing::HasSubstr(",ok,-7,1,"));
}

}  // namespace
}  // namespace zymdb::documents
