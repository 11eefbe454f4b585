// Commands that fail.
#ifndef ZYMDB_TESTS_TOOL_FAILING_H
#define ZYMDB_TESTS_TOOL_FAILING_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tool/run_tool.h"

namespace zymdb::test {

// Nothing is printed but one line that tells the reason.
inline void expect_one_line(const Outcome& outcome, int status, const std::string& reason) {
  EXPECT_EQ(outcome.status, status) << outcome;
  EXPECT_THAT(outcome.out, testing::IsEmpty());
  EXPECT_THAT(outcome.err, testing::StartsWith("zymdb: "));
  EXPECT_THAT(outcome.err, testing::HasSubstr(reason));
  EXPECT_THAT(lines_of(outcome.err), testing::SizeIs(1)) << outcome;
}

}  // namespace zymdb::test

#endif
