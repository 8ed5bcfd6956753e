// Names of files as text.
#include "cli/text.h"

#include <gtest/gtest.h>

#include <string>

using namespace gzdconv;

namespace {

TEST(Text, NamesAndTheirExtensions) {
  struct Case {
    const char *name, *extended, *repaired;  // null: no extension to rename
    bool isRecording;
  };
  for (const Case& c : {Case{"a.gzd", "a.gzd", "a_rep.gzd", true},
                        {"b.GzD", "b.GzD", "b_rep.gzd", true},
                        {"c.asc", "c.asc", "c_rep.gzd", false},
                        {".gzd", ".gzd", "_rep.gzd", false},
                        {"abcd", "abcd.gzd", nullptr, false},
                        {"abc", "abc.gzd", nullptr, false},
                        {"", ".gzd", nullptr, false},
                        {"a.gz", "a.gz.gzd", nullptr, false}}) {
    std::string extended, repaired = "as it was";
    add_extension(extended, c.name);
    EXPECT_EQ(extended, c.extended);
    EXPECT_EQ(rename_extension(repaired, c.name), c.repaired != nullptr ? 0 : -1) << c.name;
    EXPECT_EQ(repaired, c.repaired != nullptr ? c.repaired : "as it was");
    EXPECT_EQ(is_gzd_file(c.name), c.isRecording) << c.name;
  }
}

TEST(Text, Characters) {
  std::string text = "A\\b\\Z";
  EXPECT_EQ(counttoken(text, '\\'), 2u);
  replace(text, '\\', '/');
  lowerstring(text);
  EXPECT_EQ(text, "a/b/z");
  std::string name = "unset";
  EXPECT_EQ(set_file_name(name, "a\\b.gzd", true), 0);
  EXPECT_EQ(name, "a/b.gzd");
  EXPECT_EQ(set_file_name(name, "c\\d", false), 0);
  EXPECT_EQ(name, "c/d");
  testing::internal::CaptureStdout();
  EXPECT_EQ(set_file_name(name, "c\\d", true), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\nERROR: file is not .GZD file\n");
}

}  // namespace
