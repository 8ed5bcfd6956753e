// What the command line asks for.
#ifndef GZDCONV_OPTIONS_H
#define GZDCONV_OPTIONS_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "gzd.h"

namespace gzdconv {

inline constexpr int max_filter_texts = 10;
inline constexpr std::size_t max_option_text = 255;  // of a debug file name or a filter text
inline constexpr std::size_t max_arguments_used = 511;
inline constexpr int screen_setup_values = 10;

// The one option record, constant once the command line has been read. Flags are 0 or 1.
struct Options {
  int output_events = 1;
  int tabs_only = 0;
  int output_messages = 1;
  int output_resolution = 0;
  float default_res_x = MISSING_DATA;  // units per degree; MISSING_DATA: none
  float default_res_y = MISSING_DATA;
  int fixed_resolution = 0;  // use the default resolution always
  int left_events = 1;
  int right_events = 1;
  int output_eye_events = 1;
  int left_samples = 1;
  int output_velocity = 0;
  int right_samples = 1;
  int load_message_log = 0;
  int suppress_column_headers = 1;
  int preferred_sample_type = GZD_POSITION_GAZE;
  int output_flags = 1;
  int sfhmf = 0;  // full head-marker flags in samples
  int gaze_map = 0;
  int gaze_3d = 0;
  int gaze_3d_screen = 0;
  int gaze_3d_eye = 0;
  int video_frames = 0;
  int head_markers = 0;    // where the recording does not tell its head data itself
  int extra_decimals = 0;  // 0 to 5
  int output_average = 0;
  int fast_velocity = 0;
  int left_eye = 1;
  int right_eye = 1;
  int output_samples = 1;
  int output_start_events = 1;
  int consistency = GZD_CONSISTENCY_REPAIR;
  int verbose = 0;
  int hide_viewer_commands = 0;
  std::optional<std::string> log_file_name;
  std::string output_dir;  // ends in "/", empty: beside the input
  int uncorrected_raw = 0;
  int overwrite = 0;
  int float_time = 0;
  int output_input = 0;
  int output_buttons = 0;
  int failsafe = 0;
  int output_target = 1;
  int utf8 = 0;
  int no_time_check = 0;
  int message_offsets = 0;
  int no_pupil_area_check = 0;
  int debug = 0;
  std::string debug_file_name;
  std::array<std::string, max_filter_texts> filter_out_texts;
  int filter_out_count = 0;
  // Screen distance top and bottom (mm); edges left, top, right, bottom in mm and in pixels.
  std::array<float, screen_setup_values> screen_setup = {700,  760, -200, 150,  200,
                                                         -150, 0,   0,    1023, 767};
  int screen_setup_given = 0;
  std::string arguments_used;  // every option, a blank after each
  int head_resolution = 0;
  int pupil_ellipse = 0;
  int no_head_tracking = 0;
  int no_extended_data = 0;
  int geom_messages = 0;
};

extern Options options;
extern bool quiet;               // no banner, progress, box, summary, or warnings of the run
extern char missing_string[20];  // printed where a value is missing

// Sets every option to its default; `quiet` and `missing_string` too.
void init_options();

// Reads the command line into `options`, and what is no option into `names`, in order. Returns 1,
// or 0 when the run must stop; the reason has then been printed.
int parse_options(int argc, char** argv, std::vector<std::string>& names);

}  // namespace gzdconv

#endif
