#include "convert.h"

#include <unistd.h>

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
    EXPECT_EQ(options.out_file, nullptr);
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

TEST_F(ConvertTest, RunsWithoutFiles) {
  EXPECT_EQ(gzdconv({}), 0);
  EXPECT_TRUE(console_.starts_with(banner + "USAGE: gzdconv  [options] <input .gzd file>\n"));
  EXPECT_TRUE(console_.ends_with("     -pe  Output pupil ellipse.\n"));
  EXPECT_EQ(gzdconv({"-t"}), 0);
  EXPECT_EQ(console_, banner);
  EXPECT_EQ(gzdconv({"-q", "-d", "a.log"}), 0);
  EXPECT_EQ(gzdconv({"-reparse", "a.gzd"}), 1);
  EXPECT_EQ(fake.name, "");
  EXPECT_EQ(gzdconv({"a.gzd", "--version"}), 0);
  EXPECT_EQ(console_, "GZDCONV version 1.2.3 Fake \n");
  EXPECT_EQ(gzdconv({"-t", "--help", "a.gzd"}), 0);
  EXPECT_TRUE(console_.starts_with("USAGE: gzdconv "));
  EXPECT_EQ(fake.name, "");
}

TEST_F(ConvertTest, NamesPairWithTheirOutputs) {
  EXPECT_EQ(gzdconv({"-q", "a.gzd", "b.gzd"}), 0);
  EXPECT_TRUE(fs::exists("a.asc") && fs::exists("b.asc"));
  fs::remove("a.asc");
  EXPECT_EQ(gzdconv({"a", "out", "c.gzd"}), 0);
  EXPECT_TRUE(fs::exists("out.asc") && fs::exists("c.asc") && !fs::exists("a.asc"));
  EXPECT_TRUE(console_has("processing file a \n"));
  EXPECT_FALSE(console_has("processing file out \n"));
  EXPECT_EQ(gzdconv({"d", "result.txt"}), 0);
  EXPECT_EQ(fake.name, "d.gzd");
  EXPECT_TRUE(fs::exists("result.asc"));
  fs::create_directory("folder");
  EXPECT_EQ(gzdconv({"x/e.gzd", "-p", "folder"}), 0);
  EXPECT_TRUE(fs::exists("folder/e.asc"));
}

TEST_F(ConvertTest, OpensAsTheOptionsSay) {
  asc();
  EXPECT_EQ(fake.consistency, 2);
  EXPECT_EQ(fake.events, 1);
  EXPECT_EQ(fake.samples, 1);
  EXPECT_EQ(fake.config.default_rx, MISSING_DATA);
  EXPECT_EQ(fake.config.enable_debug, 0);
  asc({"-e", "-z", "-ntime_check", "-failsafe", "-o", "-logmsg", "-setres", "20", "30"});
  EXPECT_EQ(fake.consistency, 28);
  EXPECT_EQ(fake.events, 3);
  EXPECT_EQ(fake.samples, 0);
  EXPECT_EQ(fake.config.default_ry, 30.0F);
  asc({"-e", "-i", "-debug", "trace", "-defres", "20", "30"});
  EXPECT_EQ(fake.samples, 1);
  EXPECT_EQ(fake.config.default_ry, MISSING_DATA);
  EXPECT_EQ(fake.config.enable_debug, 1);
}

TEST_F(ConvertTest, HeaderShowsPreambleAndArguments) {
  fake.preamble = "** ONE\n** TWO\n";
  const std::string text = asc({"-t"});
  EXPECT_TRUE(text.starts_with("** CONVERTED FROM a.gzd using gzdapi 1.2.3 Fake on "));
  EXPECT_TRUE(text.ends_with("\n** ONE\n** TWO\n** ARGUMENTS USED: -t -q -y \n**\n\n"));
  EXPECT_EQ(console_, "");
  EXPECT_EQ(asc({"-s"}), "");
  EXPECT_EQ(gzdconv({"a", "-y"}), 0);
  EXPECT_TRUE(console_has("Preamble of file a.gzd"));
  EXPECT_TRUE(console_has("| ONE  "));
  EXPECT_TRUE(console_has("Converted successfully: 0 events, 0 samples, 0 blocks.\n"));
}

TEST_F(ConvertTest, CountsAndPeriods) {
  fake.add_sample(500);  // outside blocks
  fake.add_event(GZD_END_BLINK, 400, 500);
  fake.add_block(1000, 1, 500);
  fake.add_event(GZD_START_SAMPLES, 1000);
  for (UINT32 time = 1000; time < 1010; time += 2) fake.add_sample(time);
  fake.add_message(1004, "hello");
  fake.add_event(GZD_END_BLINK, 1000, 1008);
  for (const int skipped : {11, 14, 19, 23, 26, 27, 29, 31, 199, 201, -5})
    fake.elements.push_back({skipped, {}, {}});
  fake.add_block(1010, 0);
  EXPECT_EQ(gzdconv({"a", "-nflags"}), 0);
  EXPECT_TRUE(console_has("Converted successfully: 3 events, 5 samples, 1 blocks.\n"));
  EXPECT_EQ(fake.fetched, 12);
  const std::string text = contents("a.asc");
  EXPECT_TRUE(text.starts_with("EBLINK L 400\t500\t100\nSTART\t1000 "));
  EXPECT_NE(text.find("1000\t  100.0\t  200.0\t 1000.0\n"), std::string::npos);
  EXPECT_NE(text.find("MSG\t1004 hello\nEBLINK L 1000\t1008\t10\nEND\t1010 "), std::string::npos);
}

TEST_F(ConvertTest, AnUnreadableElementFailsTheFile) {
  fake.add_block(1000, 1, 500);
  fake.elements.push_back({GZD_SAMPLE, {}, {}});
  fake.add_sample(1002);
  fake.add_block(1010, 0);
  EXPECT_EQ(gzdconv({"a", "-q"}), 1);
  EXPECT_EQ(fake.fetched, 4) << "the others are read all the same";
  EXPECT_EQ(console_, "Could not read 1 elements of a.gzd \n");
  EXPECT_FALSE(std::filesystem::exists("a.asc"));
  EXPECT_EQ(options.out_file, nullptr);
}

TEST_F(ConvertTest, GapsAreReported) {
  fake.add_block(1000, 1, 500);
  for (const UINT32 time : {1000U, 1002U, 1008U, 1010U}) fake.add_sample(time);
  fake.add_block(1010, 0);
  fake.add_block(5000, 1, 2000);
  fake.add_sample(5000);
  fake.add_sample(5000, SMP_HALF_MS);
  fake.add_sample(5001, SMP_HALF_MS);
  gzdconv({"a"});
  EXPECT_TRUE(console_has("missing sample at 1004.000000 \n"));
  EXPECT_TRUE(console_has("missing sample at 5001.000000 \n"));
  std::size_t count = 0;
  for (std::size_t at = 0; (at = console_.find("missing", at)) != std::string::npos; ++at) ++count;
  EXPECT_EQ(count, 2U);
  EXPECT_TRUE(
      console_.ends_with(" 0 events, 7 samples, 1 blocks.\n"
                         "There are trials not starting or ending properly.\n"));
  asc();
  EXPECT_EQ(console_, "");
}

TEST_F(ConvertTest, OnlyPrintedVelocitiesAreAskedFor) {
  fake.add_block(1000, 1, 500, SMP_GAZE | SMP_HREF);
  fake.add_sample(1000);
  fake.add_block(1010, 0);
  fake.add_block(2000, 1, 500, SMP_PUPIL_POS);
  fake.add_sample(2000);
  const auto kinds = [this](std::vector<std::string> words) {
    fake.velocities_of_samples.clear();
    asc(std::move(words));
    return fake.velocities_of_samples;
  };
  using Kinds = std::vector<unsigned>;
  EXPECT_EQ(kinds({}), (Kinds{GZD_VELOCITY_NONE, GZD_VELOCITY_NONE}));
  EXPECT_EQ(kinds({"-vel"}), (Kinds{GZD_VELOCITY_GAZE, GZD_VELOCITY_RAW}));
  EXPECT_EQ(kinds({"-vel", "-sh"}), (Kinds{GZD_VELOCITY_HREF, GZD_VELOCITY_RAW}));
  EXPECT_EQ(kinds({"-fvel"}), (Kinds{GZD_VELOCITY_FAST_GAZE, GZD_VELOCITY_FAST_RAW}));
}

TEST_F(ConvertTest, MessagesWithoutTextAreReported) {
  fake.add_event(GZD_MESSAGE, 700);
  EXPECT_EQ(gzdconv({"a"}), 0);
  EXPECT_TRUE(console_has("missing message at 0 \n"));
  EXPECT_TRUE(console_has(" 1 events,"));
}

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

TEST_F(ConvertTest, DisplayMessagesSetTheMapping) {
  fake.add_message(1, "DISPLAY_COORDS 0 0 1000 1000");
  fake.add_message(2, "DISPLAY_AREA_COORDS 0 0 950 950");
  fake.add_block(1000, 1);
  fake.add_sample(1000);
  EXPECT_NE(asc({"-gazemap", "-nflags"}).find("1000\t   55.0\t  160.0\t"), std::string::npos);
}

TEST_F(ConvertTest, HeadMarkersAreRefusedForTheThirdGeneration) {
  const std::string warning = "Warning: OviloFalcon data file. No marker fields available. \n";
  gzdconv({"a", "b.gzd", "-hpos"});
  EXPECT_NE(console_.find(warning), console_.rfind(warning));
  fake.add_block(1000, 1, 500, SMP_GAZE | SMP_HEAD_DATA);
  gzdconv({"-y", "a", "b.gzd"});
  EXPECT_FALSE(console_has(warning));
  EXPECT_NE(contents("b.asc").find("\tHTARGET\t"), std::string::npos);
  fake.ovilo_revision = 4;
  fake.revision = 2;
  EXPECT_NE(asc({"-hpos"}).find("\tHPOSE\t"), std::string::npos);
}

TEST_F(ConvertTest, FailuresGiveStatusOneAndTheRunGoesOn) {
  fake.exists = false;
  EXPECT_EQ(gzdconv({"-q", "a"}), 1);
  EXPECT_EQ(console_, "Could not process a.gzd \n");
  EXPECT_FALSE(fs::exists("a.asc"));

  fake.exists = true;
  fs::create_symlink("/dev/full", "full.asc");
  for (int i = 0; i < 50000; ++i) fake.add_event(GZD_BREAK_PARSE, 1);
  EXPECT_EQ(gzdconv({"-y", "full.gzd", "b.gzd"}), 1);
  EXPECT_TRUE(console_has("Failed write to output file full.asc \n"));
  EXPECT_TRUE(console_has("Converted successfully: 50000 events"));
  EXPECT_EQ(console_.find("Converted"), console_.rfind("Converted"));
  EXPECT_EQ(fs::file_size("b.asc"), 50000U * 27);
}

TEST_F(ConvertTest, LogFileKeepsFailures) {
  fake.exists = false;
  EXPECT_EQ(gzdconv({"a", "-q", "-d", "run.log"}), 1);
  EXPECT_EQ(contents("run.log"), "Could not process a.gzd \n");
  EXPECT_EQ(gzdconv({"a", "-q", "-d", "no/run.log"}), 1);
  EXPECT_TRUE(console_.ends_with("Could not open log file no/run.log \n"));
  std::ofstream("a.gzd") << "recording";
  EXPECT_EQ(gzdconv({"a", "-q", "-d", "a.gzd"}), 1);
  EXPECT_EQ(contents("a.gzd"), "recording");
}

TEST_F(ConvertTest, FramesStandBetweenTheirSamples) {
  // Two records: frame 7 at 1003 ms, frame 8 at 1006 ms.
  const unsigned char table[] = {2, 0, 0, 0, 0x00, 0x10, 0x5A, 0xAE,              //
                                 7, 0, 0, 0, 0xEB, 3,    0,    0,    0, 0, 0, 0,  //
                                 8, 0, 0, 0, 0xEE, 3,    0,    0,    0, 0, 0, 0};
  std::ofstream("a0.ett", std::ios::binary)
      .write(reinterpret_cast<const char*>(table), sizeof table);
  fake.add_block(1000, 1, 500);
  for (UINT32 time = 1000; time < 1010; time += 2) fake.add_sample(time);
  EXPECT_EQ(gzdconv({"a", "-i", "-ns", "-q"}), 0);
  const std::string text = contents("a.asc");
  EXPECT_NE(text.find("MSG\t1003 VFRAME 7 a0.avi\nMSG\t1006 VFRAME 8 a0.avi\n"), std::string::npos)
      << text;
}

TEST_F(ConvertTest, MissingFrameTableIsReported) {
  fake.add_block(1000, 1, 500);
  EXPECT_EQ(gzdconv({"a", "-i"}), 0);
  EXPECT_TRUE(
      console_has("could not open or create lookup table file. The avi files may not be "
                  "found or renamed or DirectX 9 is not installed!\n"));
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

}  // namespace
