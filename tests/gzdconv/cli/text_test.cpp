#include "cli/text.h"

#include <gtest/gtest.h>

using namespace gzdconv;

namespace {

TEST(TextTest, ExtensionsAreAddedUnlessThereIsOneOfThreeLetters) {
  std::string name;
  for (const auto& [given, wanted] : {std::pair{"trial1", "trial1.gzd"},
                                      {"a.gzd", "a.gzd"},
                                      {"a.txt", "a.txt"},
                                      {"a.b", "a.b.gzd"},
                                      {"a", "a.gzd"},
                                      {".abc", ".abc"},
                                      {"", ".gzd"}}) {
    add_extension(name, given);
    EXPECT_EQ(name, wanted);
  }
}

TEST(TextTest, RecordingNamesHaveAtLeastFiveCharacters) {
  EXPECT_TRUE(is_gzd_file("a.gzd"));
  EXPECT_TRUE(is_gzd_file("dir/a.GzD"));
  for (const char* other : {".gzd", "gzd", "a.gz", "a.gzd ", "agzd", ""})
    EXPECT_FALSE(is_gzd_file(other)) << other;
}

TEST(TextTest, NamesAreRewritten) {
  std::string name = "kept";
  EXPECT_EQ(rename_extension(name, "noextension"), -1);
  EXPECT_EQ(name, "kept");
  EXPECT_EQ(rename_extension(name, "a.gzd"), 0);
  EXPECT_EQ(name, "a_rep.gzd");
  EXPECT_EQ(set_file_name(name, "d\\e.gzd", true), 0);
  EXPECT_EQ(name, "d/e.gzd");
  testing::internal::CaptureStdout();
  EXPECT_EQ(set_file_name(name, "d\\e", true), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\nERROR: file is not .GZD file\n");
  EXPECT_EQ(path_tail("a/b\\c/d"), "/d");
  EXPECT_EQ(path_tail("a\\b"), "\\b");
  EXPECT_EQ(path_tail("a"), "a");
}

TEST(TextTest, Letters) {
  std::string text = "AbZ[@";
  lowerstring(text);
  EXPECT_EQ(text, "abz[@");
  replace(text, '@', '!');
  EXPECT_EQ(text, "abz[!");
  EXPECT_EQ(rfind("a.b.c", '.'), 3U);
  EXPECT_EQ(rfind("abc", '.'), std::string_view::npos);
  EXPECT_EQ(counttoken("a.b.c", '.'), 2U);
}

}  // namespace
