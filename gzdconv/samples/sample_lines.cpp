#include "samples/sample_lines.h"

#include "asc/output.h"
#include "asc/sample_time.h"
#include "cli/options.h"
#include "lines/recording_lines.h"
#include "lines/resolution.h"
#include "samples/raw_sample_lines.h"
#include "samples/sample_columns.h"
#include "samples/sample_header.h"

namespace gzdconv {

namespace {

constexpr int ordinary_samples = 0;  // of options.current_eye
constexpr int raw_samples = 1;
constexpr int head_pose_mode = 3;  // of options.head_data_mode

SamplePlan plan;

bool carries_pose_flags(const FSAMPLE& sample) {
  return options.head_data_mode == head_pose_mode && options.tracker_revision > 1 &&
         sample.htype != INT16_MIN;
}

void begin_file(const RECORDINGS& block, const FSAMPLE& sample) {
  options.sample_header_printed = 1;
  printPoseFlags = carries_pose_flags(sample);
  if (options.suppress_column_headers == 0 && canHeaderDeterminedForSamples() != 0) {
    print_sample_header(block, sample);
  }
}

// Once a block has had an ordinary sample, all that follow are.
bool write_if_raw(GZDFILE* handle, const RECORDINGS& block, FSAMPLE& sample) {
  if (!is_raw_sample(block, sample)) {
    options.current_eye = ordinary_samples;
    return false;
  }
  write_raw_sample(handle, block, sample);
  options.current_eye = raw_samples;
  return true;
}

// For a sample that is not like the one before in its block. Returns false for a raw one, which is
// written.
bool begin_ordinary_sample(GZDFILE* handle, const RECORDINGS& block, FSAMPLE& sample) {
  if (options.sample_header_printed == 0) begin_file(block, sample);
  if (options.current_eye != ordinary_samples && write_if_raw(handle, block, sample)) return false;
  plan.choose(block, sample);
  return true;
}

}  // namespace

void begin_sample_block() {
  plan.forget();
}

int write_sample(GZDFILE* handle, const RECORDINGS& block, FSAMPLE& sample) {
  if (!plan.suits(sample)) [[unlikely]] {
    if (options.output_samples == 0) return 1;
    if (!begin_ordinary_sample(handle, block, sample)) return 0;
  }
  updatePPD(sample);
  lpbuffer.begin_line();
  char* end = write_sample_time(lpbuffer.cursor(), sample);
  end = plan.write(end, {handle, sample});
  *end++ = '\n';
  lpbuffer.set_cursor(end);
  return 0;
}

}  // namespace gzdconv
