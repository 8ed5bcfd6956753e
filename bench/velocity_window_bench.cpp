// Velocities of a run of samples from the queue, for both models and the usual rates.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "read/SampleQueue.h"

using namespace gzd;

namespace {

constexpr int samples_in_run = SampleQueue::series_capacity;
constexpr int old_tracker = 2;
constexpr int new_tracker = 3;
constexpr int half_milliseconds = 2000;

// The queue is filled by hand here.

Sample make_sample(int i, int rate) {
  Sample sample;
  sample.flags = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_RESOLUTION | SMP_PUPIL_SIZE | SMP_IS_SAMPLE;
  sample.updateTimeStamp(200000 +
                         static_cast<UINT64>(i) * half_milliseconds / static_cast<UINT64>(rate));
  for (int eye = 0; eye < 2; ++eye) {
    sample.gx[eye] = 500.0f + 100.0f * std::sin(static_cast<float>(i) / 40.0f);
    sample.gy[eye] = 380.0f + 60.0f * std::cos(static_cast<float>(i) / 55.0f);
    sample.pa[eye] = 900.0f;
  }
  sample.rx = sample.ry = 36.0f;
  return sample;
}

// A run of samples at a rate.
class RunSource : public SampleSource {
 public:
  explicit RunSource(int samplesPerSecond) : rate(samplesPerSecond) {}
  void readQueueSample(UINT32 index, Sample& sample) override {
    sample = make_sample(static_cast<int>(index), rate);
  }
  int stampsPerSampleAt(UINT32) override { return half_milliseconds / rate; }

 private:
  int rate;
};

Index index_of_run(int rate) {
  Index index;
  for (int i = 0; i < samples_in_run; ++i) {
    index.gzdItemList.push_back(
        {i, GZD_SAMPLE, SIDE_NONE, SMP_IS_SAMPLE, make_sample(i, rate).getTimeStamp()});
  }
  return index;
}

void velocity_of_run(benchmark::State& state, unsigned kinds) {
  const int rate = static_cast<int>(state.range(1));
  const VelocitySettings settings{
      .kinds = kinds, .sampleRate = rate, .ovilo_revision = static_cast<int>(state.range(0))};
  const Index index = index_of_run(rate);
  RunSource source(rate);
  SampleQueue queue(index, source);
  queue.getSample(0);
  std::vector<Sample> samples;
  samples.reserve(samples_in_run);
  for (int i = 0; i < samples_in_run; ++i) samples.push_back(make_sample(i, rate));
  Sample sample;
  for ([[maybe_unused]] auto step : state) {
    for (int slot = 0; slot < queue.size(); ++slot) {
      sample = samples[static_cast<std::size_t>(slot)];
      queue.setVelocity(sample, sample.getTimeStamp(), slot, settings);
      benchmark::DoNotOptimize(sample);
    }
  }
  state.SetItemsProcessed(state.iterations() * queue.size());
}

BENCHMARK_CAPTURE(velocity_of_run, gaze, unsigned{GZD_VELOCITY_GAZE})
    ->ArgsProduct({{old_tracker, new_tracker}, {250, 1000, 2000}})
    ->ArgNames({"tracker", "rate"});
BENCHMARK_CAPTURE(velocity_of_run, all, unsigned{GZD_VELOCITY_ALL})
    ->ArgsProduct({{old_tracker, new_tracker}, {1000}})
    ->ArgNames({"tracker", "rate"});

}  // namespace

BENCHMARK_MAIN();
