// A whole sample line, written to /dev/null, under several options.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "asc/output.h"
#include "cli/options.h"
#include "gzd_data.h"
#include "samples/sample_lines.h"

using namespace gzdconv;

namespace {

constexpr int samples_in_run = 4096;
constexpr UINT16 sample_flags = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE |
                                SMP_STATUS | SMP_INPUT | SMP_BUTTONS | SMP_IS_SAMPLE;
constexpr byte both_eyes = 3;

FSAMPLE make_sample(int i) {
  FSAMPLE sample{};
  sample.time = 100000 + static_cast<UINT32>(i);
  sample.flags = sample_flags;
  sample.htype = static_cast<INT16>(NOT_RECORDED_WORD);
  for (int eye = 0; eye < 2; ++eye) {
    sample.gx[eye] = static_cast<float>(4978 + i % 50) / 10.0f;
    sample.gy[eye] = static_cast<float>(3112 + i % 30) / 10.0f;
    sample.gxvel[eye] = static_cast<float>(i % 97) / 3.0f;
    sample.gyvel[eye] = static_cast<float>(i % 89) / 7.0f;
    sample.pa[eye] = static_cast<float>(880 + i % 20);
  }
  sample.rx = sample.ry = 36.0f;
  return sample;
}

RECORDINGS make_block() {
  RECORDINGS block{};
  block.sample_rate = 1000;
  block.state = GZD_BLOCK_START;
  block.record_type = GZD_RECORD_BOTH;
  block.eye = both_eyes;
  return block;
}

void write_lines(benchmark::State& state) {
  const RECORDINGS block = make_block();
  std::vector<FSAMPLE> samples;
  samples.reserve(samples_in_run);
  for (int i = 0; i < samples_in_run; ++i) samples.push_back(make_sample(i));
  RunState run;
  run.format_revision = 1;
  FILE* const sink = std::fopen("/dev/null", "w");
  if (sink == nullptr) return state.SkipWithError("cannot open /dev/null");
  std::setvbuf(sink, nullptr, _IONBF, 0);
  lpbuffer.begin_file(sink);
  begin_sample_block(run.block);
  for ([[maybe_unused]] auto step : state)
    for (FSAMPLE& sample : samples) write_sample(run, block, sample);
  lpbuffer.flush();
  lpbuffer.end_file();
  std::fclose(sink);
  state.SetItemsProcessed(state.iterations() * samples_in_run);
}

void line_default(benchmark::State& state) {
  init_options();
  write_lines(state);
}

void line_velocity(benchmark::State& state) {
  init_options();
  options.output_velocity = 1;
  write_lines(state);
}

void line_resolution(benchmark::State& state) {
  init_options();
  options.output_resolution = 1;
  write_lines(state);
}

void line_tabs_float_time(benchmark::State& state) {
  init_options();
  options.tabs_only = options.float_time = 1;
  options.extra_decimals = 2;
  write_lines(state);
}

BENCHMARK(line_default);
BENCHMARK(line_velocity);
BENCHMARK(line_resolution);
BENCHMARK(line_tabs_float_time);

}  // namespace

BENCHMARK_MAIN();
