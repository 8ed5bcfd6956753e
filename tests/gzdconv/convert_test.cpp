// What is told of a conversion, by a library that is made up.
#include "convert.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "lines/frame_lines.h"
#include "process.h"
#include "support/capture.h"
#include "support/fake_gzd.h"

using namespace gzdconv;

namespace {

namespace fs = std::filesystem;

// Converts the scripted recording in a folder of its own.
class ConvertTest : public testing::Test {
 protected:
  ConvertTest() {
    fake = {};
    std::string name = testing::TempDir() + "gzdconv-convert-XXXXXX";
    directory_ = mkdtemp(name.data());
    home_ = fs::current_path();
    fs::current_path(directory_);
  }
  ~ConvertTest() override {
    fs::current_path(home_);
    fs::remove_all(directory_);
  }

  // Runs the program; returns its exit status.
  int gzdconv(std::vector<std::string> words) {
    std::vector<char*> argv;
    words.insert(words.begin(), "gzdconv");
    for (std::string& word : words) argv.push_back(word.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = run(static_cast<int>(argv.size()), argv.data());
    std::fflush(stdout);
    console_ = testing::internal::GetCapturedStdout();
    told_ = testing::internal::GetCapturedStderr();
    EXPECT_EQ(fake.open_handles, 0);
    EXPECT_EQ(lpbuffer.file(), nullptr);
    return status;
  }

  // The ASC file of a quiet run.
  std::string asc(std::vector<std::string> words = {}) {
    words.insert(words.end(), {"-q", "-y", "a.gzd"});
    EXPECT_EQ(gzdconv(words), 0);
    return contents("a.asc");
  }

  static std::string contents(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(name).rdbuf();
    return text.str();
  }

  bool console_has(const std::string& text) const {
    return console_.find(text) != std::string::npos;
  }

  std::string console_;
  std::string told_;  // on standard error

 private:
  fs::path directory_, home_;
};

const std::string banner =
    "\nGZDCONV: Ovilo GZD file -> ASCII (text) file translator\nGZDCONV version 1.2.3 Fake \n\n";

TEST_F(ConvertTest, LineBreaksInMessagesAreToldOnceAFile) {
  fake.add_message(1, "TRIALID 1\nEFIX L");
  fake.add_message(2, "two\r\n");
  fake.add_message(3, "one line");
  EXPECT_NE(asc().find("MSG\t1 TRIALID 1\nEFIX L\nMSG\t2 two\r\n\nMSG\t3 "), std::string::npos);
  EXPECT_EQ(told_, "gzdconv: a.gzd: messages with line breaks, copied as they are: 2\n");
  for (const char* hidden : {"-nmsg", "-s"}) {
    asc({hidden});
    EXPECT_EQ(told_, "") << hidden;
  }
}

TEST_F(ConvertTest, AnEyeThatTheRecordingLacksIsTold) {
  fake.add_block(1000, 1);
  asc({"-r"});
  EXPECT_EQ(told_, "gzdconv: a.gzd: has no right eye, the only one chosen\n");
  for (const char* fine : {"-l", "-y"}) {
    asc({fine});
    EXPECT_EQ(told_, "");
  }
}

TEST_F(ConvertTest, TooLongVideoNameEndsTheRun) {
  const std::string name(27, 'n');
  const unsigned char table[] = {0, 0, 0, 0, 0x00, 0x10, 0x5A, 0xAE};
  for (const std::string& base : {name, name.substr(2)})
    std::ofstream(base + "0.ett", std::ios::binary)
        .write(reinterpret_cast<const char*>(table), sizeof table);
  fake.add_block(1000, 1, 500);
  EXPECT_EQ(gzdconv({name.substr(2) + ".gzd", "-i"}), 0);
  EXPECT_THROW(gzdconv({name + ".gzd", "-i"}), FatalError);
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(fake.open_handles, 0);
}

TEST_F(ConvertTest, TellsWhatTheTextLacks) {
  fake.findings = {
      {GZD_FINDING_GAP_FILLED, 0, 0, 1, 3, -1, 1, 2},
      {GZD_FINDING_SAMPLES_END_EARLY, 0, 0, 1, 9, -1, 1000.5, 1200},
      {GZD_FINDING_SAMPLES_END_EARLY, 0, 0, 3, 9, -1, 200000000, 200000010},
      {GZD_FINDING_UNREAD, 0, 0, 1, 4096, 70000, -1, -1},
      {GZD_FINDING_CUT, 0, 0, 1, 3, 70001, -1, -1},
      {GZD_FINDING_DAMAGE, 0, 0, 1, 9, 70002, -1, -1},
      {GZD_FINDING_READ_ERROR, 0, EIO, 1, 9, 70003, -1, -1},
      {GZD_FINDING_TOO_LARGE, 0, 0, 1, 9, 70004, -1, -1},
      {GZD_FINDING_LOG_LEFT_OUT, 0, 0, 1, 1, -1, -1, -1},
  };
  asc();
  EXPECT_EQ(
      told_,
      "gzdconv: a.gzd: no samples from 1000.5 ms to the end of the block at 1200 ms\n"
      "gzdconv: a.gzd: no samples from 200000000 ms to the end of the block at 200000010 ms, "
      "and in 2 more blocks\n"
      "gzdconv: a.gzd: 4096 bytes behind the closing tag, from byte 70000 on, were not read\n"
      "gzdconv: a.gzd: the records end without their closing tag: reading stopped at byte "
      "70001, 3 bytes before the end\n"
      "gzdconv: a.gzd: a record cannot be read: reading stopped at byte 70002, 9 bytes before "
      "the end\n"
      "gzdconv: a.gzd: the file cannot be read on: reading stopped at byte 70003, 9 bytes "
      "before the end\n"
      "gzdconv: a.gzd: the recording is too large: reading stopped at byte 70004, 9 bytes before "
      "the end\n"
      "gzdconv: a.gzd: the message log was not merged: it lacks a sync line or its closing line\n");
}

}  // namespace
