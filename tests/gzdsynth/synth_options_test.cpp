// The options of gzdsynth.
#include "synth_options.h"

#include <gtest/gtest.h>

#include <sstream>

namespace gzdsynth {
namespace {

SessionSettings parsed(std::vector<std::string_view> arguments) {
  arguments.push_back("out.gzd");
  return parse_command(arguments).settings;
}

TEST(SynthOptions, ValuesReachTheSettings) {
  const SessionSettings s = parsed(
      {"--generation", "4",  "--rate",   "2000", "--eyes", "right", "--coords",      "raw,href",
       "--duration",   "60", "--trials", "7",    "--seed", "9",     "--start-time",  "1073741900",
       "--ellipse",    "72", "--gap",    "30",   "--cut",  "5",     "--message-log", "m.log"});
  EXPECT_EQ(s.output, "out.gzd");
  EXPECT_EQ(s.generation, 4);
  EXPECT_EQ(s.rate, 2000);
  EXPECT_TRUE(!s.left && s.right);
  EXPECT_TRUE(!s.gaze && s.href && s.raw);
  EXPECT_EQ(s.seconds, 60);
  EXPECT_EQ(s.trials, 7);
  EXPECT_EQ(s.seed, 9U);
  EXPECT_EQ(s.startTime, 1073741900U);
  EXPECT_EQ(s.ellipse, 72);
  EXPECT_EQ(s.gap, 30);
  EXPECT_EQ(s.cut, 5U);
  EXPECT_EQ(s.messageLog, "m.log");
  EXPECT_EQ(parsed({"--generation", "1"}).rate, 250);
}

// A name without a placeholder in the usage text's left column parses alone.
TEST(SynthOptions, SwitchesOfTheUsageTextParse) {
  std::istringstream lines(usage_text());
  std::string line;
  int switches = 0;
  while (std::getline(lines, line)) {
    if (!line.starts_with("  --")) continue;
    std::istringstream left(line.substr(0, 26));
    std::string name, placeholder;
    left >> name >> placeholder;
    if (!placeholder.empty() || name == "--help" || name == "--version") continue;
    ++switches;
    EXPECT_NO_THROW(parsed({name, "--generation", name == "--pose" ? "4" : "3"})) << name;
  }
  EXPECT_EQ(switches, 15);
  EXPECT_TRUE(parse_command({"--nonsense", "--help"}).help);
}

TEST(SynthOptions, RejectsWhatCannotBeMade) {
  const std::vector<std::vector<std::string_view>> bad = {{"--nonsense"},
                                                          {"--rate", "300"},
                                                          {"--rate", "1000x"},
                                                          {"--eyes", "three"},
                                                          {"--coords", ""},
                                                          {"--coords", "gaze,"},
                                                          {"--duration", "0"},
                                                          {"--duration", "-1"},
                                                          {"--trials", "99999999999999999999"},
                                                          {"second.gzd"},
                                                          {"--pose"},
                                                          {"--ellipse", "60"},
                                                          {"--trials", "101"},
                                                          {"--generation", "5"},
                                                          {"--start-time", "4294967295"},
                                                          {"--rate", "500", "--generation", "1"},
                                                          {"--raw-packed", "--target"}};
  for (const auto& arguments : bad) EXPECT_THROW(parsed(arguments), UsageError) << arguments[0];
  EXPECT_THROW(parse_command({}), UsageError);
  EXPECT_THROW(parse_command({"out.txt"}), UsageError);
  EXPECT_THROW(parse_command({"out.gzd", "--cut"}), UsageError);
}

}  // namespace
}  // namespace gzdsynth
