// The command line: options, values, help.
#include "cli/options.h"

#include <algorithm>
#include <sstream>

#include "cli/console.h"
#include "support/capture.h"

using namespace gzdconv;

namespace {

class OptionsTest : public AscTest {
 protected:
  // Parses a command line, without the program's name, into default options.
  int parse(std::vector<std::string> words) {
    init_options();
    names_.clear();
    std::vector<char*> argv;
    words.insert(words.begin(), "gzdconv");
    for (std::string& word : words) argv.push_back(word.data());
    int result = -1;
    testing::internal::CaptureStderr();
    printed_ = console(
        [&] { result = parse_options(static_cast<int>(argv.size()), argv.data(), names_); });
    told_ = testing::internal::GetCapturedStderr();
    return result;
  }

  std::vector<std::string> names_;
  std::string printed_;
  std::string told_;  // on standard error
};

struct Flag {
  const char* option;
  int Options::*field;
  int value;
};

using O = Options;

// One line an effect; the options in the spellings that their tests must tell apart.
constexpr Flag flags[] = {
    {"-avg", &O::output_average, 1},
    {"-A", &O::output_average, 1},
    {"-buttons", &O::output_buttons, 1},
    {"-c", &O::consistency, 1},
    {"-c", &O::verbose, 1},
    {"-cl", &O::uncorrected_raw, 1},
    {"-cl", &O::consistency, 2},
    {"-z", &O::consistency, 0},
    {"-e", &O::output_samples, 0},
    {"-e", &O::output_events, 1},
    {"-ns", &O::output_samples, 0},
    {"-eh", &O::suppress_column_headers, 0},
    {"-eh", &O::output_samples, 1},
    {"-failsafe", &O::failsafe, 1},
    {"-failsafe", &O::fast_velocity, 0},
    {"-ftime", &O::float_time, 1},
    {"-FTIME", &O::float_time, 1},
    {"-fvel", &O::fast_velocity, 1},
    {"-fvel", &O::output_velocity, 1},
    {"-ftimes", &O::fast_velocity, 1},
    {"-geom", &O::geom_messages, 1},
    {"-gazemap", &O::gaze_map, 1},
    {"-g3DScr", &O::gaze_3d, 1},
    {"-g3DScr", &O::gaze_3d_screen, 1},
    {"-g3deye", &O::gaze_3d, 1},
    {"-g3DEye", &O::gaze_3d_eye, 1},
    {"-g3DEye", &O::gaze_3d_screen, 0},
    {"-hr", &O::head_resolution, 1},
    {"-hr", &O::head_markers, 0},
    {"-hpos", &O::head_markers, 1},
    {"-input", &O::output_input, 1},
    {"-input", &O::video_frames, 0},
    {"-i", &O::video_frames, 1},
    {"-l", &O::right_eye, 0},
    {"-nr", &O::right_eye, 0},
    {"-logmsg", &O::load_message_log, 1},
    {"-logmsg", &O::right_eye, 1},
    {"-ne", &O::output_events, 0},
    {"-ned", &O::no_extended_data, 1},
    {"-ned", &O::output_events, 1},
    {"-neye", &O::output_eye_events, 0},
    {"-NEYE", &O::output_samples, 0},
    {"-neyx", &O::output_events, 0},
    {"-nflags", &O::output_flags, 0},
    {"-nht", &O::no_head_tracking, 1},
    {"-nhx", &O::no_head_tracking, 0},
    {"-nmsg", &O::output_messages, 0},
    {"-npa_check", &O::no_pupil_area_check, 1},
    {"-np", &O::no_pupil_area_check, 0},
    {"-nst", &O::output_start_events, 0},
    {"-nst", &O::output_samples, 1},
    {"-NST", &O::output_start_events, 0},
    {"-ntarget", &O::output_target, 0},
    {"-ntime_check", &O::no_time_check, 1},
    {"-ntime_check", &O::output_target, 1},
    {"-nv", &O::hide_viewer_commands, 1},
    {"-o", &O::message_offsets, 1},
    {"-offset", &O::message_offsets, 0},
    {"-pe", &O::pupil_ellipse, 1},
    {"-r", &O::left_eye, 0},
    {"-nl", &O::left_eye, 0},
    {"-res", &O::output_resolution, 1},
    {"-res", &O::left_eye, 1},
    {"-x", &O::output_resolution, 1},
    {"-s", &O::output_events, 0},
    {"-sx", &O::output_events, 1},
    {"-sg", &O::preferred_sample_type, GZD_POSITION_GAZE},
    {"-sh", &O::preferred_sample_type, GZD_POSITION_HREF},
    {"-sp", &O::preferred_sample_type, GZD_POSITION_PUPIL},
    {"-sfhmf", &O::sfhmf, 1},
    {"-sfhmf", &O::output_events, 1},
    {"-SCENECAM", &O::gaze_map, 1},
    {"-scenecam", &O::video_frames, 1},
    {"-t", &O::tabs_only, 1},
    {"-utf8", &O::utf8, 1},
    {"-UTF8", &O::utf8, 1},
    {"-u", &O::utf8, 0},
    {"-v", &O::verbose, 1},
    {"-v", &O::output_velocity, 0},
    {"-vel", &O::output_velocity, 1},
    {"-vel", &O::verbose, 0},
    {"-y", &O::overwrite, 1},
};

// A line of the usage text as words: its first option, and "1" for each value shown after it.
std::vector<std::string> words_of_usage(const std::string& line) {
  std::size_t place = line.find_first_of(" /", 5);
  std::vector<std::string> words = {line.substr(5, place - 5)};
  while ((place = line.find_first_not_of(' ', place)) != std::string::npos && line[place] == '<') {
    words.emplace_back("1");
    place = std::min(line.find('>', place), line.size() - 1) + 1;
  }
  return words;
}

TEST_F(OptionsTest, EveryOptionOfTheUsageTextIsKnown) {
  std::istringstream usage(console([] { print_usage("gzdconv"); }));
  int seen = 0;
  for (std::string line; std::getline(usage, line);) {
    if (!line.starts_with("     -")) continue;
    ++seen;
    std::vector<std::string> words = words_of_usage(line);
    const std::string option = words[0];
    words.emplace_back("name");
    EXPECT_EQ(parse(words), 1) << line;
    EXPECT_EQ(names_, std::vector<std::string>{"name"}) << line;
    EXPECT_EQ(options.arguments_used, option + " ");
    EXPECT_EQ(told_, "");
  }
  EXPECT_EQ(seen, 47);
}

TEST_F(OptionsTest, UnknownOptionsAreRecordedAndIgnored) {
  EXPECT_EQ(parse({"-", "--what", "-1", "-kappa", "-wide", "-jump"}), 1);
  EXPECT_EQ(options.arguments_used, "- --what -1 -kappa -wide -jump ");
  EXPECT_EQ(printed_, "");
}

TEST_F(OptionsTest, WordsThatAreNoOptionsAreNamedOnce) {
  const std::pair<const char*, const char*> words[] = {
      {"-nflgas", "taken as -nflags"},
      {"-h", "taken as -hpos; the nearest is --help"},
      {"-fail", "taken as -fvel; the nearest is -failsafe"},
      {"--json", "ignored; the nearest is --version"},
      {"-u", "ignored; the nearest is -utf8"},
  };
  for (const auto& [word, advice] : words) {
    parse({word, "-y", word});
    EXPECT_EQ(told_, std::string("gzdconv: ") + word + ": no such option, " + advice + "\n");
  }
  parse({"-nf", "-a", "-NEYE", "-reparse"});  // the beginning of one name alone will do
  EXPECT_EQ(told_, "");
}

TEST_F(OptionsTest, DefaultResolutionsOutOfRangeAreIgnored) {
  parse({"-defres", "26.5", "27"});
  EXPECT_EQ(options.default_res_x, 26.5F);
  EXPECT_EQ(options.default_res_y, 27.0F);
  EXPECT_EQ(options.fixed_resolution, 0);
  parse({"-SetRes", "30", "30"});
  EXPECT_EQ(options.fixed_resolution, 1);
  parse({"-defres", "0.01", "1e5"});
  EXPECT_EQ(options.default_res_x, 0.01F);
  for (const char* bad : {"0.0099", "100001", "nan", "text"}) {
    EXPECT_EQ(parse({"-setres", "30", bad, "a.gzd"}), 1);
    EXPECT_EQ(options.default_res_x, MISSING_DATA) << bad;
    EXPECT_EQ(options.fixed_resolution, 0) << bad;
    EXPECT_EQ(names_.size(), 1U) << bad;
  }
}

TEST_F(OptionsTest, ExtraDecimalsAreClamped) {
  parse({"-fp", "3"});
  EXPECT_EQ(options.extra_decimals, 3);
  EXPECT_EQ(printed_, "");
  parse({"-fp", "0"});
  EXPECT_EQ(options.extra_decimals, 1);
  EXPECT_EQ(printed_, "Command line option -fp given 0.. using 1  \n");
  parse({"-fp", "9"});
  EXPECT_EQ(options.extra_decimals, 5);
  EXPECT_EQ(printed_, "Command line option -fp given 9.. using 5  \n");
  parse({"-fp", "4294967298"});  // the lowest 32 bits count
  EXPECT_EQ(options.extra_decimals, 2);
  EXPECT_EQ(printed_, "");
  parse({"-fp", "99999999999999999999"});
  EXPECT_EQ(options.extra_decimals, 1);
  EXPECT_EQ(printed_, "Command line option -fp given -1.. using 1  \n");
}

TEST_F(OptionsTest, WhatStopsTheRunSaysWhy) {
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{"-reparse"}, "Command line option -reparse is disabled!!!\n"},
      {{"-debug"}, "Command line option debug: -mising file name \n"},
      {{"-fout"}, "Command line option fout: -mising search text \n"},
      {{"-fp"},
       "Command line option -fp: -mising number of decimals -fp <number of additional decimals> "
       "\n"},
      {{"-Data"}, "Command line option -Data: -mising value \n"},
      {{"-miss"}, "Command line option -miss: -mising value \n"},
      {{"-SEPRES"}, "Command line option -SEPRES: -mising value \n"},
      {{"-defres", "30"}, "Command line option -defres: -mising value \n"},
      {{"-setres"}, "Command line option -setres: -mising value \n"},
  };
  for (const auto& [words, message] : lines) {
    EXPECT_EQ(parse(words), 0) << words[0];
    EXPECT_EQ(printed_, message);
  }
  EXPECT_EQ(parse({"-p"}), 0);
  EXPECT_TRUE(printed_.starts_with("USAGE: gzdconv  [options] <input .gzd file>\nOPTIONS:\n"));
}

}  // namespace
