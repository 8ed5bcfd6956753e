// Labels, and the legends of the flags that the labels name.
#include "samples/sample_header.h"

#include <string>
#include <string_view>

#include "asc/output.h"
#include "cli/options.h"
#include "samples/sample_plan.h"
#include "samples/sample_shape.h"

namespace gzdconv {

namespace {

constexpr std::string_view binocular_cr_legend =
    "left-missing\tleft-recovery\tright-missing\tright-recovery\n";
constexpr std::string_view monocular_cr_legend = "missing\trecovery\n";

// "too-close, too-far" names two flags.
constexpr std::string_view target_legend =
    "\n** TARGET_FLAGS:\ttarget\tmissing\textreme-angle\ttarget-near-eye\ttoo-close, too-far\t"
    "target-top-edge\tbottom-edge\tleft-edge\tright-edge\t"
    "left-eye-top\tleft-eye-bottom\tleft-eye-left\tleft-eye-right\t"
    "right-eye-top\tright-eye-bottom\tright-eye-left\tright-eye-right\n";

constexpr std::string_view head_marker_legend =
    "\n** HEAD_MARKER_FLAGS:\tHEAD_MARKER_IMU_ONLY\tHEAD_MARKER_AGE3\tHEAD_MARKER_MISSING\t"
    "HEAD_MARKER_WARNING\t";

struct FlagName {
  std::string_view name;
  std::string_view meaning;
};

// By bit number; higher bits have no name.
constexpr FlagName head_marker_names[] = {
    {"HEAD_MARKER_WARNING", "marker warning"},
    {"HEAD_MARKER_MISSING", "markers missing"},
    {"HEAD_MARKER_AGE3", "markers are three samples old"},
    {"HEAD_MARKER_IMU_ONLY", "head pose from the inertial sensor only"},
};
constexpr unsigned head_marker_bits = 32;

void append_flag_name(std::string_view name, std::string_view meaning) {
  lpbuffer.append(std::string_view(" :"));
  lpbuffer.append(name);
  lpbuffer.append(std::string_view("  "));
  lpbuffer.append(meaning);
  lpbuffer.append('\n');
}

void append_full_marker_legend() {
  lpbuffer.append(std::string_view("\n** HEAD_MARKER_FLAGS_FULL:\n"));
  for (unsigned bit = head_marker_bits; bit-- > 0;) {
    if (bit < std::size(head_marker_names)) {
      append_flag_name(head_marker_names[bit].name, head_marker_names[bit].meaning);
    } else {
      append_flag_name("HEAD_MARKER_BIT_" + std::to_string(bit), "reserved");
    }
  }
}

void append_cr_legend(const SampleShape& shape, bool with_pose) {
  lpbuffer.append(std::string_view("\n** CR_FLAGS:\tinterpolated\t"));
  if (with_pose) lpbuffer.append(std::string_view("calibration-warning\t"));
  lpbuffer.append(shape.binocular_block ? binocular_cr_legend : monocular_cr_legend);
}

void append_legends(const SampleShape& shape, bool with_pose) {
  if (shape.cr_flags) append_cr_legend(shape, with_pose);
  if (shape.target) lpbuffer.append(target_legend);
  if (shape.head_pose && with_pose) {
    lpbuffer.append(head_marker_legend);
    if (options.sfhmf != 0) append_full_marker_legend();
  }
}

}  // namespace

void print_sample_header(const RunState& state, const RECORDINGS& block, const FSAMPLE& sample) {
  const SampleShape shape(state, block, sample);
  lpbuffer.begin_line();
  lpbuffer.append(std::string_view("** COLUMNS\n** time\t"));
  append_column_labels(shape);
  append_legends(shape, state.prints_pose_flags);
  if (lpbuffer.cursor()[-1] != '\n') lpbuffer.append('\n');
}

}  // namespace gzdconv
