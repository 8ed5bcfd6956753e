// The lines of blocks: START with what the block holds, END with its mean resolution.
#include "lines/recording_lines.h"

#include <string_view>

#include "asc/number.h"
#include "asc/number_form.h"
#include "asc/output.h"
#include "cli/console.h"
#include "cli/options.h"
#include "lines/resolution.h"

namespace gzdconv {

namespace {

constexpr unsigned position_flags = SMP_PUPIL_POS | SMP_HREF | SMP_GAZE;
constexpr int resolution_decimals = 2;
constexpr int rate_decimals = 2;
constexpr int rate_width = 7;

bool has_samples(const RECORDINGS& record) {
  return record.record_type == GZD_RECORD_SAMPLES || record.record_type == GZD_RECORD_BOTH;
}

bool has_events(const RECORDINGS& record) {
  return record.record_type == GZD_RECORD_EVENTS || record.record_type == GZD_RECORD_BOTH;
}

std::string_view text_if(bool condition, std::string_view text) {
  return condition ? text : std::string_view();
}

bool is_position_type(int code) {
  return code == GZD_POSITION_PUPIL || code == GZD_POSITION_HREF || code == GZD_POSITION_GAZE;
}

void choose_sample_type(BlockState& block, unsigned sflags) {
  const int preferred = options.preferred_sample_type;
  block.sample_position = select_sample_type(sflags);
  if (block.sample_position == preferred && is_position_type(preferred)) return;
  report("\rWARNING: preferred sample type %s not available: using %s data\n",
         parse_type(preferred), parse_type(block.sample_position));
}

void print_start_line(const RECORDINGS& record) {
  const bool eyes = options.output_eye_events || options.output_samples;
  print_parts(
      "START\t", record.time, text_if(options.float_time, ".0"), " \t",
      text_if(eyes && options.left_eye && options.left_events && block_has_left(record), "LEFT\t"),
      text_if(eyes && options.right_eye && options.right_events && block_has_right(record),
              "RIGHT\t"),
      text_if(has_samples(record), "SAMPLES\t"), text_if(has_events(record), "EVENTS"), '\n');
}

void print_rate(const RunState& state, const RECORDINGS& record) {
  print_parts("\tRATE\t");
  append_fixed(record.sample_rate, rate_decimals, rate_width);
  if (state.format_revision <= 0) return;
  print_parts("\tTRACKING\t", record.recording_mode ? "CR" : "P", "\tFILTER");
  lpbuffer.set_cursor(write_count(lpbuffer.cursor(), record.filter_type));
}

void print_events_line(RunState& state, const RECORDINGS& record) {
  state.block.event_position = record.pos_type;
  print_parts(
      "EVENTS\t", parse_type(record.pos_type),
      text_if(options.left_eye && options.left_events && block_has_left(record), "\tLEFT"),
      text_if(options.right_eye && options.right_events && block_has_right(record), "\tRIGHT"),
      text_if(options.output_resolution, "\tRES"));
  print_rate(state, record);
  lpbuffer.append('\n');
}

std::string_view head_part(const RunState& state, const RECORDINGS& record) {
  switch (state.block.head_data) {
    case HeadData::markers:
      return "\tHMARKER";
    case HeadData::target:
      return text_if(record.sflags & SMP_HEAD_DATA, "\tHTARGET");
    case HeadData::pose:
      return text_if(state.format_revision >= first_pose_revision, "\tHPOSE");
    default:
      return "";
  }
}

void print_samples_line(RunState& state, const RECORDINGS& record) {
  choose_sample_type(state.block, record.sflags);
  print_parts(
      "SAMPLES\t", parse_type(state.block.sample_position),
      text_if(options.left_eye && options.left_samples && block_has_left(record), "\tLEFT"),
      text_if(options.right_eye && options.right_samples && block_has_right(record), "\tRIGHT"),
      text_if(options.output_velocity, "\tVEL"), text_if(options.output_resolution, "\tRES"),
      head_part(state, record));
  print_rate(state, record);
  print_parts(text_if(options.output_input, "\tINPUT"),
              text_if(options.output_buttons, "\tBUTTONS"), '\n');
}

void print_mean_resolution() {
  if (resolution_sums.are_empty()) {
    print_value(resolution_decimals, options.default_res_x);
    print_value(resolution_decimals, options.default_res_y);
    return;
  }
  const Resolution mean = resolution_sums.mean();
  print_value(resolution_decimals, mean.x);
  print_value(resolution_decimals, mean.y);
  resolution_sums.clear();
}

}  // namespace

int print_recording(RunState& state, const RECORDINGS& record) {
  return record.state ? print_start(state, record) : print_end(record);
}

int print_start(RunState& state, const RECORDINGS& record) {
  state.format_revision = gzd_get_revision(state.recording);
  if (!options.output_events) {
    choose_sample_type(state.block, record.sflags);
    return 1;
  }
  print_start_line(record);
  print_parts("PRESCALER\t1\nVPRESCALER\t1\nPUPIL\t", record.pupil_type ? "DIAMETER" : "AREA",
              '\n');
  if (options.output_eye_events && has_events(record)) print_events_line(state, record);
  if (options.output_samples && has_samples(record)) print_samples_line(state, record);
  return 1;
}

int print_end(const RECORDINGS& record) {
  if (!options.output_events) return 1;
  print_parts("END\t", record.time, " \t", text_if(has_samples(record), "SAMPLES\t"),
              text_if(has_events(record), "EVENTS"), "\tRES");
  print_mean_resolution();
  lpbuffer.append('\n');
  return 1;
}

bool block_has_left(const RECORDINGS& block) {
  return block.eye == GZD_BLOCK_LEFT || block.eye == GZD_BLOCK_BOTH;
}

bool block_has_right(const RECORDINGS& block) {
  return block.eye == GZD_BLOCK_RIGHT || block.eye == GZD_BLOCK_BOTH;
}

int select_sample_type(unsigned sflags) {
  struct Choice {
    int type;
    unsigned flag;
  };
  constexpr Choice pupil{GZD_POSITION_PUPIL, SMP_PUPIL_POS};
  constexpr Choice href{GZD_POSITION_HREF, SMP_HREF};
  constexpr Choice gaze{GZD_POSITION_GAZE, SMP_GAZE};
  const int preferred = options.preferred_sample_type;
  if (!(sflags & position_flags)) return preferred;
  const auto first_present = [sflags](Choice first, Choice second, Choice last) {
    if (sflags & first.flag) return first.type;
    return sflags & second.flag ? second.type : last.type;
  };
  if (preferred == GZD_POSITION_PUPIL) return first_present(pupil, gaze, href);
  if (preferred == GZD_POSITION_HREF) return first_present(href, gaze, pupil);
  return first_present(gaze, href, pupil);
}

const char* parse_type(int code) {
  if (code == GZD_POSITION_PUPIL) return "PUPIL";
  return code == GZD_POSITION_HREF ? "HREF" : "GAZE";
}

int canHeaderDeterminedForEvents() {
  return options.output_resolution == 0 ? 1 : 0;
}

int canHeaderDeterminedForSamples() {
  return 1;
}

}  // namespace gzdconv
