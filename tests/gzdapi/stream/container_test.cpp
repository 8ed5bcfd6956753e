// What a preamble tells of the text in the messages.
#include "stream/container.h"

#include <gtest/gtest.h>

#include <string>

#include "support/memory_stream.h"

namespace {

// Of a preamble of one line; -1 when it does not tell.
int encoding_told_by(const std::string& line) {
  constexpr int untouched = -1;
  utf8encoding = untouched;
  const std::string text = line + "\nENDP:\n";
  MemoryStream stream({text.begin(), text.end()});
  Preamble().read(stream);
  return utf8encoding;
}

TEST(Preamble, TellsWhetherMessagesAreUtf8) {
  struct Case {
    const char* line;
    int expected;
  };
  for (const Case& c : {Case{"MVTQ1.5", 0},
                        {"with MVTQ1.6 x", 1},
                        {"MVTQ1.10", 1},
                        {"MVTQ1.", 0},
                        {"MVTQ2.1", 1},
                        {"MVTQ8.", 1},
                        {"MVTQ9.1", -1},
                        {"MVTQ1", -1},
                        {"MVTQ21", -1},
                        {"MVTQ.2", -1},
                        {"MVTQ", -1},
                        {"MVTQ3", -1},
                        {"Netvia", 1},
                        {"netvia", -1},
                        {"MVTQ9.1 Netvia", -1}}) {
    EXPECT_EQ(encoding_told_by(c.line), c.expected) << c.line;
  }
  utf8encoding = 0;
}

}  // namespace
