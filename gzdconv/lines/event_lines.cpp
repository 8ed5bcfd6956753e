// One line for each event, by its kind; before the first one the header.
#include "lines/event_lines.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "asc/output.h"
#include "cli/console.h"
#include "cli/options.h"
#include "lines/event_columns.h"
#include "lines/event_pairs.h"
#include "lines/message_filter.h"
#include "lines/recording_lines.h"
#include "lines/resolution.h"

namespace gzdconv {

namespace {

constexpr int button_count = 8;
constexpr unsigned changed_shift = 8;  // the high byte tells which buttons changed

const char* time_suffix() {
  return options.float_time ? ".0" : "";
}

void print_eye_header(Generation generation, const char* name, const char* columns) {
  print("** COLUMNS %s EVENT\n** type\teye\tstime%s", name, columns);
  if (generation >= Generation::osprey) print_extra_header();
  print("\n");
}

// The column names of every kind of event, once a file.
void print_header(RunState& state, const FEVENT& event) {
  if (state.event_header_printed || event.type == GZD_MESSAGE) return;
  state.event_header_printed = true;
  if (options.suppress_column_headers || !options.output_events || !canHeaderDeterminedForEvents())
    return;
  print("** COLUMNS MSG EVENT\n** time\tmessage\n");
  print("** COLUMNS BUTTON EVENT\n** time\tmessage\n");
  print_eye_header(state.generation, "SFIX", "");
  print_eye_header(state.generation, "EFIX", "\tetime\tintl\tavgx\tavgy\tavgps");
  print_eye_header(state.generation, "SBLINK", "");
  print_eye_header(state.generation, "EBLINK", "\tetime\tintl");
  print_eye_header(state.generation, "SSACC", "");
  print_eye_header(state.generation, "ESACC", "\tetime\tintl\tgstx\tgsty\tgenx\tgeny\tavel\tpvel");
}

// Without samples the block's mean resolution comes from the events.
void sum_resolution(const FEVENT& event, int position_type) {
  if (position_type != GZD_POSITION_GAZE || !(event.read & EVT_RESOLUTION) ||
      options.output_samples)
    return;
  resolution_sums.add(event.supd_x, event.supd_y);
  resolution_sums.add(event.eupd_x, event.eupd_y);
}

void print_message(const FEVENT& event) {
  if (!has_message_line(event)) return;
  print_parts("MSG\t", event.sttime, time_suffix(), options.tabs_only ? '\t' : ' ');
  lpbuffer.write(message_text(event));
  lpbuffer.append('\n');
}

char digit(int value) {
  return static_cast<char>('0' + value);
}

void print_buttons(const FEVENT& event) {
  for (int button = 0; button < button_count; ++button)
    if (event.buttons >> changed_shift & 1U << button)
      print_parts("BUTTON\t", event.sttime, time_suffix(), '\t', digit(button + 1), '\t',
                  digit(event.buttons >> button & 1), '\n');
}

void print_other_event(const FEVENT& event) {
  switch (event.type) {
    case GZD_BREAK_PARSE:
      print("** BREAK IN DATA STREAM **\n");
      break;
    case GZD_MESSAGE:
      print_message(event);
      break;
    case GZD_INPUT:
      print_parts("INPUT\t", event.sttime, time_suffix(), '\t', std::uint32_t{event.input}, '\n');
      break;
    case GZD_BUTTON:
      print_buttons(event);
      break;
    default:
      break;
  }
}

// What begins the line of an eye event: kind, eye, and what aligns the times of the kinds, or tabs.
struct Label {
  char text[16] = {};
  std::size_t length = 0;
};

constexpr std::size_t kinds = GZD_END_FIXATION - GZD_START_BLINK + 1;
using Labels = std::array<std::array<Label, 2>, kinds>;

constexpr Label make_label(std::string_view kind, char eye, bool tabs_only) {
  constexpr std::size_t width = 9;
  Label label;
  for (const char c : kind) label.text[label.length++] = c;
  label.text[label.length++] = tabs_only ? '\t' : ' ';
  label.text[label.length++] = eye;
  if (tabs_only) label.text[label.length++] = '\t';
  while (!tabs_only && label.length < width) label.text[label.length++] = ' ';
  return label;
}

constexpr Labels make_labels(bool tabs_only) {
  constexpr std::array<std::string_view, kinds> names = {"SBLINK", "EBLINK", "SSACC",
                                                         "ESACC",  "SFIX",   "EFIX"};
  Labels labels;
  for (std::size_t i = 0; i < kinds; ++i)
    labels[i] = {make_label(names[i], 'L', tabs_only), make_label(names[i], 'R', tabs_only)};
  return labels;
}

constexpr Labels aligned_labels = make_labels(false), tabbed_labels = make_labels(true);

const Label& label_of(const FEVENT& event) {
  const Labels& labels = options.tabs_only ? tabbed_labels : aligned_labels;
  return labels[static_cast<std::size_t>(event.type - GZD_START_BLINK)]
               [event.eye == GZD_LEFT_EYE ? 0 : 1];
}

void append_time(std::uint32_t time) {
  lpbuffer.append_unsigned(time);
  if (options.float_time) lpbuffer.append(".0");
}

void print_start(const FEVENT& event) {
  const Label& label = label_of(event);
  lpbuffer.begin_line();
  lpbuffer.append(label.text, label.length);
  append_time(event.sttime);
}

std::uint32_t print_end(const FEVENT& event, int period) {
  const std::uint32_t duration = event.entime - event.sttime + static_cast<std::uint32_t>(period);
  print_start(event);
  for (const std::uint32_t time : {event.entime, duration}) {
    lpbuffer.append('\t');
    append_time(time);
  }
  return duration;
}

void report_reversed_times(const FEVENT& event) {
  if (event.entime >= event.sttime) return;
  if (event.type == GZD_END_FIXATION) {
    report("###ENDFIX end time is less than start time %u %u\n", event.sttime, event.entime);
  } else if (event.type == GZD_END_SACCADE || options.verbose) {
    report("###END%s end time is less than start time %u%s %u%s\n",
           event.type == GZD_END_SACCADE ? "SACC" : "BLINK", event.sttime, time_suffix(),
           event.entime, time_suffix());
  }
}

void print_eye_end(const FEVENT& event, int position_type, int period) {
  report_reversed_times(event);
  const std::uint32_t duration = print_end(event, period);
  if (event.type == GZD_END_SACCADE)
    print_saccade_columns(event, position_type, duration);
  else if (event.type == GZD_END_FIXATION)
    print_fixation_columns(event, position_type);
}

void print_eye_event(const FEVENT& event, int position_type, int period) {
  if (is_start_event(event))
    print_start(event);
  else
    print_eye_end(event, position_type, period);
  note_start_time(event);
  if (event.read & EVT_HEAD_POSE) print_exended_event_data(event);
  lpbuffer.append('\n');
}

bool is_eye_event(const FEVENT& event) {
  return event.type >= GZD_START_BLINK && event.type <= GZD_END_FIXATION;
}

bool is_eye_printed(const FEVENT& event) {
  return options.output_eye_events &&
         (event.eye == GZD_LEFT_EYE ? options.left_eye : options.right_eye);
}

}  // namespace

int print_event(RunState& state, const FEVENT& event, int period) {
  const int position_type = state.block.event_position;
  print_header(state, event);
  sum_resolution(event, position_type);
  if (is_start_event(event) && !options.output_start_events) return 1;
  if (!options.output_events) return 1;
  if (is_eye_event(event)) {
    if (!is_eye_printed(event)) return 1;
    print_eye_event(event, position_type, period);
  } else {
    print_other_event(event);
  }
  check_start_times();
  return 0;
}

bool has_message_line(const FEVENT& event) {
  const char* const text = message_text(event);
  return options.output_events && options.output_messages && text != nullptr &&
         event.message->len != 0 && is_message_printed(text);
}

bool is_start_event(const FEVENT& event) {
  switch (event.type) {
    case GZD_START_PARSE:
    case GZD_START_BLINK:
    case GZD_START_SACCADE:
    case GZD_START_FIXATION:
    case GZD_START_SAMPLES:
    case GZD_START_EVENTS:
      return true;
    default:
      return false;
  }
}

}  // namespace gzdconv
