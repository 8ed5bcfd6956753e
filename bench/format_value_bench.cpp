// Formatting one column: the fast path of floats, tabs only, missing values, and the general path.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "asc/number.h"
#include "asc/output.h"
#include "asc/sample_number.h"
#include "cli/options.h"
#include "gzd_data.h"

using namespace gzdconv;

namespace {

constexpr int value_count = 4096;

std::vector<float> gaze_values() {
  std::vector<float> values;
  values.reserve(value_count);
  for (int i = 0; i < value_count; ++i)
    values.push_back(static_cast<float>(2000 + i * 7919 % 8000) / 10.0f);
  return values;
}

// Runs `format` over values; their text is thrown away.
template <typename Format>
void run(benchmark::State& state, const std::vector<float>& values, Format format) {
  char* const start = lpbuffer.cursor();
  for ([[maybe_unused]] auto step : state) {
    for (const float value : values) {
      lpbuffer.set_cursor(start);
      format(value);
    }
    benchmark::ClobberMemory();
  }
  lpbuffer.set_cursor(start);
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(values.size()));
}

void print_decimals(benchmark::State& state) {
  init_options();
  const int decimals = static_cast<int>(state.range(0));
  run(state, gaze_values(), [=](float value) { print_value(decimals, value); });
}

void print_tabs_only(benchmark::State& state) {
  init_options();
  options.tabs_only = 1;
  run(state, gaze_values(), [](float value) { print_value(1, value); });
  init_options();
}

void print_sample_column(benchmark::State& state) {
  init_options();
  run(state, gaze_values(), [](float value) { print_tenths(value); });
}

void print_missing(benchmark::State& state) {
  init_options();
  run(state, std::vector<float>(value_count, MISSING_DATA),
      [](float value) { print_value(1, value); });
}

// A double without an exact product.
void print_general(benchmark::State& state) {
  init_options();
  run(state, gaze_values(), [](float value) { print_value(2, double{value} / 3.0); });
}

// What the same column costs with the C library.
void printf_column(benchmark::State& state) {
  char text[64];
  run(state, gaze_values(), [&](float value) {
    std::snprintf(text, sizeof text, "\t%7.1f", double{value});
    benchmark::DoNotOptimize(text);
  });
}

BENCHMARK(print_decimals)->Arg(0)->Arg(1)->Arg(3)->Arg(6)->ArgName("decimals");
BENCHMARK(print_tabs_only);
BENCHMARK(print_sample_column);
BENCHMARK(print_missing);
BENCHMARK(print_general);
BENCHMARK(printf_column);

}  // namespace

BENCHMARK_MAIN();
