// Inflating a recording's body from one temporary file to another.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

#include "file_sink.h"
#include "sample_record.h"
#include "stream/zipread.h"

using namespace gzd;

namespace {

constexpr int sample_count = 1'000'000;

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

gzdsynth::Bytes body() {
  gzdsynth::Bytes bytes;
  unsigned noise = 1;
  for (int i = 0; i < sample_count; ++i) {
    noise = noise * 1103515245u + 12345u;
    const int n = static_cast<int>(noise >> 16 & 15u);
    gzdsynth::put_sample(bytes, {.flags = SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE,
                                 .step = 1,
                                 .gx = {5000 + n},
                                 .gy = {3000 + (n ^ 5)},
                                 .pa = {900 + n / 4}});
  }
  return bytes;
}

void inflate_body(benchmark::State& state) {
  const gzdsynth::Bytes plain = body();
  const gzdsynth::Bytes packed = gzdsynth::deflated(plain);
  const File in(std::tmpfile());
  const File out(std::tmpfile());
  if (!in || !out || std::fwrite(packed.data(), 1, packed.size(), in.get()) != packed.size())
    return state.SkipWithError("no temporary file");
  for ([[maybe_unused]] auto step : state) {
    std::rewind(in.get());
    std::rewind(out.get());
    if (do_uncompress(in.get(), out.get()) != uncompress_ok)
      return state.SkipWithError("inflation failed");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(plain.size()));
}

BENCHMARK(inflate_body)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
