#include "command/write_arguments.h"

#include <gtest/gtest.h>

#include "tests/sessions/text_forms.h"

TEST(WriteArguments, FileRangeAndBuffer) {
  expect_rows("command/write_arguments", [](const Fields& row) {
    const zan::WriteArguments found = zan::parse_write_arguments(row[0]);
    return found.file + "|" + found.buffer + "|" + found.range;
  });
}
