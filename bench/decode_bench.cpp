// Decoding samples: whole ones, ones decoded over the one before, and the scan's glance.
#include <benchmark/benchmark.h>

#include "record/sample_decoder.h"
#include "sample_record.h"
#include "support/memory_stream.h"
#include "support/whole_sample.h"

using namespace gzd;

namespace {

constexpr int samples_in_stream = 4096;
constexpr std::size_t tag_size = 2;

constexpr unsigned binocular = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE |
                               SMP_STATUS | SMP_INPUT | SMP_BUTTONS | SMP_IS_SAMPLE;
constexpr unsigned left_eye = binocular & ~unsigned{SMP_RIGHT};

std::vector<byte> samples_of(unsigned flags) {
  std::vector<byte> bytes;
  for (int i = 0; i < samples_in_stream; ++i) {
    gzdsynth::put_sample(bytes, {.flags = flags,
                                 .step = 1,
                                 .gx = {4978 + i % 50, 5068 - i % 40},
                                 .gy = {3112 + i % 30, 3110 + i % 20},
                                 .rx = 360,
                                 .ry = 360,
                                 .pa = {893, 861},
                                 .input = 127});
  }
  return bytes;
}

StreamState gaze_state() {
  StreamState state;
  state.parameters.gaze_prescale = 10.0f;
  state.revision = 1;
  state.ovilo_revision = 3;
  return state;
}

// Runs `decode` over all samples of one tag, again and again.
template <typename Decode>
void run(benchmark::State& state, Decode decode) {
  const auto tag = static_cast<UINT16>(state.range(0));
  MemoryStream in(samples_of(tag));
  StreamState stream = gaze_state();
  for ([[maybe_unused]] auto step : state) {
    in.seek(0);
    for (int i = 0; i < samples_in_stream; ++i) {
      in.take(tag_size);
      decode(in, stream, tag);
    }
  }
  state.SetItemsProcessed(state.iterations() * samples_in_stream);
}

void decode_whole(benchmark::State& state) {
  FSAMPLE sample{};
  run(state, [&](InputStream& in, StreamState& stream, UINT16 tag) {
    decode_sample(in, stream, tag, sample);
    benchmark::DoNotOptimize(sample);
  });
}

void decode_preset(benchmark::State& state) {
  FSAMPLE sample{};
  SampleLayout layout;
  preset_sample(static_cast<UINT16>(state.range(0)), sample);
  run(state, [&](InputStream& in, StreamState& stream, UINT16 tag) {
    if (layout.tag != tag) layout = layout_of(tag, stream);
    decode_into_preset_sample(in, stream, layout, 0, sample);
    benchmark::DoNotOptimize(sample);
  });
}

void glance(benchmark::State& state) {
  SampleLayout layout;
  run(state, [&](InputStream& in, StreamState& stream, UINT16 tag) {
    benchmark::DoNotOptimize(glance_at_sample(in, stream, tag, layout));
  });
}

BENCHMARK(decode_whole)->Arg(binocular)->Arg(left_eye)->ArgName("tag");
BENCHMARK(decode_preset)->Arg(binocular)->Arg(left_eye)->ArgName("tag");
BENCHMARK(glance)->Arg(binocular)->Arg(left_eye)->ArgName("tag");

}  // namespace

BENCHMARK_MAIN();
