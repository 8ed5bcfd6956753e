// A line by its plan; the plan, the header and raw samples when something changes.
#include "samples/sample_lines.h"

#include "asc/output.h"
#include "asc/sample_time.h"
#include "cli/options.h"
#include "lines/recording_lines.h"
#include "lines/resolution.h"
#include "samples/raw_sample_lines.h"
#include "samples/sample_header.h"
#include "samples/sample_plan.h"

namespace gzdconv {

namespace {

SamplePlan plan;

bool carries_pose_flags(const RunState& state, const FSAMPLE& sample) {
  return state.block.head_data == HeadData::pose && state.format_revision >= first_pose_revision &&
         sample.htype != INT16_MIN;
}

void begin_file(RunState& state, const RECORDINGS& block, const FSAMPLE& sample) {
  state.sample_header_printed = true;
  state.prints_pose_flags = carries_pose_flags(state, sample);
  if (options.suppress_column_headers == 0 && canHeaderDeterminedForSamples() != 0) {
    print_sample_header(state, block, sample);
  }
}

// Once a block has had an ordinary sample, all that follow are.
bool write_if_raw(RunState& state, const RECORDINGS& block, FSAMPLE& sample) {
  if (!is_raw_sample(block, sample)) {
    state.block.kind = BlockKind::ordinary;
    return false;
  }
  write_raw_sample(state, block, sample);
  state.block.kind = BlockKind::raw;
  return true;
}

// For a sample that is not like the one before in its block. Returns false for a raw one, which is
// written.
bool begin_ordinary_sample(RunState& state, const RECORDINGS& block, FSAMPLE& sample) {
  if (!state.sample_header_printed) begin_file(state, block, sample);
  if (state.block.kind != BlockKind::ordinary && write_if_raw(state, block, sample)) return false;
  plan.choose(state, block, sample);
  return true;
}

}  // namespace

void begin_sample_block(BlockState& block) {
  block.kind = BlockKind::fresh;
  plan.forget();
}

int write_sample(RunState& state, const RECORDINGS& block, FSAMPLE& sample) {
  if (!plan.suits(sample)) [[unlikely]] {
    if (options.output_samples == 0) return 1;
    if (!begin_ordinary_sample(state, block, sample)) return 0;
  }
  updatePPD(sample, state.block.sample_position);
  lpbuffer.begin_line();
  char* end = write_sample_time(lpbuffer.cursor(), sample);
  end = plan.write(end, {state, sample});
  *end++ = '\n';
  lpbuffer.set_cursor(end);
  return 0;
}

}  // namespace gzdconv
