// The text file: overwriting, failed writes, parts, lines of any length.
#include "asc/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/capture.h"

using namespace gzdconv;

namespace {

namespace fs = std::filesystem;

class OutputTest : public testing::Test {
 protected:
  OutputTest() {
    init_options();
    begin_run();
    lpbuffer.forget_failure();
    std::string name = testing::TempDir() + "gzdconv-output-XXXXXX";
    directory_ = mkdtemp(name.data());
  }
  ~OutputTest() override {
    close_output_file();
    fs::remove_all(directory_);
  }

  std::string path(const std::string& name) const { return directory_ / name; }

  std::string contents(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(path(name)).rdbuf();
    return text.str();
  }

  void put(const std::string& name, const std::string& text) const {
    std::ofstream(path(name)) << text;
  }

  // Opens the output for `name` with `answer` on standard input, and closes it again when it
  // opened. What that printed goes to `printed_`.
  int open(const std::string& name, const std::string& answer = "") {
    put("answer", answer);
    const int keyboard = dup(STDIN_FILENO);
    if (std::freopen(path("answer").c_str(), "r", stdin) == nullptr) return -1;
    testing::internal::CaptureStdout();
    const int result = open_output_file(path(name), path("input.gzd"));
    if (result == 0) print("new\n");
    close_output_file();
    std::fflush(stdout);
    printed_ = testing::internal::GetCapturedStdout();
    dup2(keyboard, STDIN_FILENO);
    close(keyboard);
    return result;
  }

  fs::path directory_;
  std::string printed_;
};

// The answers live as long as the run, so their whole story is one test.
TEST_F(OutputTest, AsksBeforeItOverwrites) {
  put("a.asc", "old");
  const std::string question =
      path("a.asc") + " already exists. Do you want to overwrite ? [Y/N/A]";
  for (const char* no : {"n\n", "", "\n", "x\n", " y\n"}) {
    EXPECT_EQ(open("a.gzd", no), 1) << no;
    EXPECT_EQ(printed_, question);
    EXPECT_EQ(contents("a.asc"), "old");
  }
  EXPECT_EQ(open("a.gzd", "yes\n"), 0);
  EXPECT_EQ(contents("a.asc"), "new\n");
  EXPECT_EQ(open("a.gzd", "n\n"), 1);
  EXPECT_EQ(open("b.gzd"), 0);
  EXPECT_EQ(printed_, "");
  options.overwrite = 1;
  EXPECT_EQ(open("a.gzd"), 0);
  EXPECT_EQ(printed_, "");
  options.overwrite = 0;
  EXPECT_EQ(open("a.gzd", "a\n"), 0);
  EXPECT_EQ(open("a.gzd"), 0);
  EXPECT_EQ(printed_, "");
}

TEST_F(OutputTest, NeverOverwritesItsInput) {
  put("input.gzd", "recording");
  fs::create_symlink(path("input.gzd"), path("link.asc"));
  options.overwrite = 1;
  EXPECT_EQ(open("link.txt"), 1);
  EXPECT_EQ(printed_, "Could not open output file " + path("link.asc") + " \n");
  EXPECT_EQ(contents("input.gzd"), "recording");
}

TEST_F(OutputTest, FailedWritesAreNoticed) {
  options.overwrite = 1;
  fs::create_symlink("/dev/full", path("full.asc"));
  ASSERT_EQ(open_output_file(path("full.gzd"), ""), 0);
  EXPECT_FALSE(lpbuffer.failed());
  for (int i = 0; i < 50000; ++i) print("line\n");
  EXPECT_TRUE(lpbuffer.failed());
  testing::internal::CaptureStdout();
  EXPECT_EQ(close_output_file(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Failed write to output file " + path("full.asc") + " \n");
  EXPECT_TRUE(fs::is_symlink(path("full.asc")));

  options.utf8 = 1;
  EXPECT_EQ(open("full.gzd"), 1);
  EXPECT_EQ(printed_, "Failed write to output file " + path("full.asc") + " \n");
  options.utf8 = 0;
  EXPECT_EQ(open("fine.gzd"), 0);
  EXPECT_EQ(printed_, "");
}

// A text is under its name when it is whole, with the rights of the one before; until then that
// one stays.
TEST_F(OutputTest, TextsReplaceOthersWhenTheyAreWhole) {
  options.overwrite = 1;
  put("a.asc", "old");
  put("a.asc.part", "of a run that was killed");
  fs::permissions(path("a.asc"), fs::perms{0640});
  for (const char* end : {"discard", "close"}) {
    ASSERT_EQ(open_output_file(path("a.gzd"), ""), 0);
    print("new\n");
    EXPECT_EQ(contents("a.asc"), "old");
    std::string{"close"} == end ? static_cast<void>(close_output_file()) : discard_output_file();
    EXPECT_FALSE(fs::exists(path("a.asc.part")));
  }
  EXPECT_EQ(contents("a.asc"), "new\n");
  EXPECT_EQ(fs::status(path("a.asc")).permissions(), fs::perms{0640});
}

TEST_F(OutputTest, IncompleteFilesAreRemoved) {
  put("a.asc", "old");
  options.overwrite = 1;
  ASSERT_EQ(open_output_file(path("a.gzd"), ""), 0);
  print("some");
  // From here on every write to the file fails.
  const int closed = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  dup2(closed, fileno(lpbuffer.file()));
  close(closed);
  testing::internal::CaptureStdout();
  EXPECT_EQ(close_output_file(), -1);
  testing::internal::GetCapturedStdout();
  EXPECT_FALSE(fs::exists(path("a.asc.part")));
  EXPECT_EQ(contents("a.asc"), "old");
}

TEST_F(OutputTest, LinesOfAnyLengthKeepTheirOrder) {
  std::string expected;
  ASSERT_EQ(open_output_file(path("a.gzd"), ""), 0);
  for (const std::size_t length : {10U, 40000U, 20U, 32768U, 32767U, 300000U, 5U})
    for (int i = 0; i < 4; ++i) {
      const std::string text(length, static_cast<char>('a' + i));
      print("%s\n", text.c_str());
      lpbuffer.write(text);
      lpbuffer.begin_line();
      lpbuffer.append('\n');
      expected += text + '\n' + text + '\n';
    }
  EXPECT_EQ(close_output_file(), 0);
  EXPECT_EQ(contents("a.asc"), expected);
}

}  // namespace
