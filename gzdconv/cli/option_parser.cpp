// Every option is one line of a table: what its word must look like, and its effect. An argument
// takes the first line that fits it; one that fits none is ignored.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string_view>

#include "cli/console.h"
#include "cli/option_words.h"
#include "cli/options.h"
#include "cli/text.h"

namespace gzdconv {

namespace {

constexpr int missing_text_width = 7;
constexpr int lowest_extra_decimals = 1;
constexpr int highest_extra_decimals = 5;
constexpr float lowest_default_resolution = 0.01F;
constexpr float highest_default_resolution = 1.0e5F;

// The walk along the command line.
class Arguments {
 public:
  Arguments(int argc, char** argv) : program_(argv[0]), rest_(argv + 1, argv + argc) {}

  // The next argument, or null after the last.
  const char* next() {
    if (rest_.empty()) return nullptr;
    const char* const argument = rest_.front();
    rest_ = rest_.subspan(1);
    return argument;
  }
  [[nodiscard]] const char* program() const { return program_; }

 private:
  const char* program_;
  std::span<char*> rest_;
};

// Acts on an option, given as typed; false ends the run.
using Handler = bool (*)(Arguments& arguments, const char* option);

struct Setting {
  int Options::*field = nullptr;
  int value = 1;
};

enum Match { word, prefix };  // the whole argument, or its beginning; both in any case

struct Rule {
  Match match;
  std::string_view text;  // in capitals, without the "-"
  Setting first{}, second{};
  Handler handler = nullptr;
};

constexpr Rule handled(Match match, std::string_view text, Handler handler) {
  return {match, text, {}, {}, handler};
}

// The value of an option. It may be missing, when the option is the last word of the line.
const char* take_value(Arguments& arguments, const char* option) {
  const char* const value = arguments.next();
  if (value == nullptr) std::printf("Command line option %s: -mising value \n", option);
  return value;
}

bool set_debug_file(Arguments& arguments, const char* /*option*/) {
  const char* const name = arguments.next();
  if (name == nullptr) {
    std::printf("Command line option debug: -mising file name \n");
    return false;
  }
  options.debug = 1;
  options.debug_file_name = std::string(name).substr(0, max_option_text);
  return true;
}

bool set_log_file(Arguments& arguments, const char* option) {
  const char* const name = take_value(arguments, option);
  if (name == nullptr) return false;
  options.log_file_name = name;
  std::printf("Command line option: -d, using log file %s\n", shown_text(name).c_str());
  return true;
}

bool is_default_resolution(float value) {
  return value >= lowest_default_resolution && value <= highest_default_resolution;
}

// Reads a pair; one out of range is left out silently.
bool set_default_resolution(Arguments& arguments, const char* option) {
  const char* const x = take_value(arguments, option);
  if (x == nullptr) return false;
  const char* const y = take_value(arguments, option);
  if (y == nullptr) return false;
  const auto rx = static_cast<float>(std::strtod(x, nullptr));
  const auto ry = static_cast<float>(std::strtod(y, nullptr));
  if (!is_default_resolution(rx) || !is_default_resolution(ry)) return true;
  options.default_res_x = rx;
  options.default_res_y = ry;
  std::string name = option;
  lowerstring(name);
  if (name == "-setres") options.fixed_resolution = 1;
  return true;
}

bool add_filter_text(Arguments& arguments, const char* /*option*/) {
  const char* const text = arguments.next();
  if (text == nullptr) {
    std::printf("Command line option fout: -mising search text \n");
    return false;
  }
  if (options.filter_out_count == max_filter_texts) {
    std::printf("Reached the maximum number of filter out texts of %d \n", max_filter_texts);
    return false;
  }
  const auto place = static_cast<std::size_t>(options.filter_out_count++);
  options.filter_out_texts[place] = std::string(text).substr(0, max_option_text);
  return true;
}

bool set_extra_decimals(Arguments& arguments, const char* /*option*/) {
  const char* const text = arguments.next();
  if (text == nullptr) {
    std::printf(
        "Command line option -fp: -mising number of decimals -fp <number of additional "
        "decimals> \n");
    return false;
  }
  const int given = std::atoi(text);  // which keeps the lowest 32 bits of a long number
  options.extra_decimals = std::clamp(given, lowest_extra_decimals, highest_extra_decimals);
  if (given != options.extra_decimals)
    std::printf("Command line option -fp given %d.. using %d  \n", given, options.extra_decimals);
  return true;
}

bool set_missing_string(Arguments& arguments, const char* option) {
  const char* const text = take_value(arguments, option);
  if (text == nullptr) return false;
  std::snprintf(missing_string, sizeof missing_string, "%*.*s", missing_text_width,
                missing_text_width, text);
  std::printf("Command line option: -miss, using missing value=%s\n", missing_string);
  return true;
}

bool set_output_dir(Arguments& arguments, const char* /*option*/) {
  const char* const directory = arguments.next();
  if (directory == nullptr) {
    print_usage(arguments.program());
    return false;
  }
  set_file_name(options.output_dir, directory, false);
  options.output_dir += '/';
  return true;
}

bool set_screen_setup(Arguments& arguments, const char* option) {
  const char* const text = take_value(arguments, option);
  if (text == nullptr) return false;
  auto& v = options.screen_setup;
  const int count = std::sscanf(text, "%f,%f,%f,%f,%f,%f,%f,%f,%f,%f", v.data(), &v[1], &v[2],
                                &v[3], &v[4], &v[5], &v[6], &v[7], &v[8], &v[9]);
  if (count == screen_setup_values) options.screen_setup_given = 1;
  return true;
}

// -e and -s: only one kind of lines, or both again when the other one was chosen before.
bool only_events(Arguments& /*arguments*/, const char* /*option*/) {
  if (options.output_events)
    options.output_samples = 0;
  else
    options.output_samples = options.output_events = 1;
  return true;
}

bool only_samples(Arguments& /*arguments*/, const char* /*option*/) {
  if (options.output_samples)
    options.output_events = 0;
  else
    options.output_samples = options.output_events = 1;
  return true;
}

// -l and -r: only one eye, or both again when the other one was chosen before.
bool only_left_eye(Arguments& /*arguments*/, const char* /*option*/) {
  if (options.left_eye)
    options.right_eye = 0;
  else
    options.left_eye = options.right_eye = 1;
  return true;
}

bool only_right_eye(Arguments& /*arguments*/, const char* /*option*/) {
  if (options.right_eye)
    options.left_eye = 0;
  else
    options.left_eye = options.right_eye = 1;
  return true;
}

bool be_quiet(Arguments& /*arguments*/, const char* /*option*/) {
  quiet = true;
  return true;
}

bool refuse_reparse(Arguments& /*arguments*/, const char* /*option*/) {
  std::printf("Command line option -reparse is disabled!!!\n");
  return false;
}

using O = Options;

// gzdtool's converter.cpp knows which of these take values or name files.
constexpr Rule rules[] = {
    {prefix, "A", {&O::output_average}},
    {prefix, "B", {&O::output_buttons}},
    {prefix, "CL", {&O::uncorrected_raw}},
    {prefix, "C", {&O::consistency, GZD_CONSISTENCY_CHECK}, {&O::verbose}},
    handled(word, "DEBUG", set_debug_file),
    handled(word, "DEFRES", set_default_resolution),
    handled(prefix, "D", set_log_file),
    {prefix, "EH", {&O::suppress_column_headers, 0}},
    handled(prefix, "E", only_events),
    {word, "FTIME", {&O::float_time}},
    {word, "FAILSAFE", {&O::failsafe}},
    handled(word, "FOUT", add_filter_text),
    handled(word, "FP", set_extra_decimals),
    {prefix, "F", {&O::output_velocity}, {&O::fast_velocity}},
    {word, "GEOM", {&O::geom_messages}},
    {word, "GAZEMAP", {&O::gaze_map}},
    {word, "G3DSCR", {&O::gaze_3d}, {&O::gaze_3d_screen}},
    {word, "G3DEYE", {&O::gaze_3d}, {&O::gaze_3d_eye}},
    {word, "HR", {&O::head_resolution}},
    {prefix, "H", {&O::head_markers}},
    {word, "INPUT", {&O::output_input}},
    {prefix, "I", {&O::video_frames}},
    {word, "LOGMSG", {&O::load_message_log}},
    handled(prefix, "L", only_left_eye),
    handled(prefix, "M", set_missing_string),
    {prefix, "NED", {&O::no_extended_data}},
    {prefix, "NEYE", {&O::output_eye_events, 0}, {&O::output_samples, 0}},
    {prefix, "NE", {&O::output_events, 0}},
    {prefix, "NF", {&O::output_flags, 0}},
    {prefix, "NHT", {&O::no_head_tracking}},
    {prefix, "NL", {&O::left_eye, 0}},
    {prefix, "NM", {&O::output_messages, 0}},
    {prefix, "NPA", {&O::no_pupil_area_check}},
    {prefix, "NR", {&O::right_eye, 0}},
    {prefix, "NST", {&O::output_start_events, 0}},
    {prefix, "NS", {&O::output_samples, 0}},
    {prefix, "NTI", {&O::no_time_check}},
    {prefix, "NT", {&O::output_target, 0}},
    {prefix, "NV", {&O::hide_viewer_commands}},
    {word, "O", {&O::message_offsets}},
    {word, "PE", {&O::pupil_ellipse}},
    handled(prefix, "P", set_output_dir),
    handled(prefix, "Q", be_quiet),
    handled(word, "REPARSE", refuse_reparse),
    {prefix, "RES", {&O::output_resolution}},
    handled(prefix, "R", only_right_eye),
    {word, "SFHMF", {&O::sfhmf}},
    {word, "SCENECAM", {&O::gaze_map}, {&O::video_frames}},
    handled(word, "SETRES", set_default_resolution),
    handled(word, "SEPRES", set_screen_setup),
    {prefix, "SG", {&O::preferred_sample_type, GZD_POSITION_GAZE}},
    {prefix, "SH", {&O::preferred_sample_type, GZD_POSITION_HREF}},
    {prefix, "SP", {&O::preferred_sample_type, GZD_POSITION_PUPIL}},
    handled(word, "S", only_samples),
    {prefix, "T", {&O::tabs_only}},
    {word, "UTF8", {&O::utf8}},
    {word, "V", {&O::verbose}},
    {prefix, "V", {&O::output_velocity}},
    {prefix, "X", {&O::output_resolution}},
    {prefix, "Y", {&O::overwrite}},
    {prefix, "Z", {&O::consistency, GZD_CONSISTENCY_NONE}},
};

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool fits(const Rule& rule, std::string_view typed) {
  if (typed.size() < rule.text.size()) return false;
  if (rule.match == word && typed.size() != rule.text.size()) return false;
  return std::equal(rule.text.begin(), rule.text.end(), typed.begin(),
                    [](char wanted, char c) { return wanted == upper(c); });
}

// The line of the table that an option word takes, or null.
const Rule* rule_for(std::string_view typed) {
  const Rule* const rule = std::find_if(std::begin(rules), std::end(rules),
                                        [typed](const Rule& r) { return fits(r, typed); });
  return rule != std::end(rules) ? rule : nullptr;
}

// The name of the option that a line of the table is for; "" for none.
std::string_view name_of(const Rule* rule) {
  if (rule == nullptr) return "";
  const auto* const name =
      std::find_if(std::begin(option_words), std::end(option_words),
                   [rule](std::string_view word) { return rule_for(word.substr(1)) == rule; });
  return name != std::end(option_words) ? *name : "";
}

void apply(Setting setting) {
  if (setting.field != nullptr) options.*setting.field = setting.value;
}

void record_argument(const char* option) {
  std::string& used = options.arguments_used;
  used.append(option).append(" ");
  used.resize(std::min(used.size(), max_arguments_used));
}

bool parse_option(Arguments& arguments, const char* option, UnknownWords& unknown) {
  record_argument(option);
  const std::string_view typed = option + 1;
  const Rule* const rule = rule_for(typed);
  if (!is_option_name(option)) unknown.note(option, name_of(rule));
  if (rule == nullptr) return true;
  apply(rule->first);
  apply(rule->second);
  return rule->handler == nullptr || rule->handler(arguments, option);
}

}  // namespace

int parse_options(int argc, char** argv, std::vector<std::string>& names) {
  Arguments arguments(argc, argv);
  UnknownWords unknown;
  while (const char* const argument = arguments.next()) {
    if (argument[0] != '-')
      names.emplace_back(argument);
    else if (!parse_option(arguments, argument, unknown))
      return 0;
  }
  return 1;
}

}  // namespace gzdconv
