// Putting an index into time order: in order already, with late messages, and disordered.
#include <benchmark/benchmark.h>

#include <random>
#include <utility>
#include <vector>

#include "index/GZDItem.h"
#include "index/index.h"
#include "order/time_order.h"

using namespace gzd;

namespace {

constexpr int item_count = 1'000'000;
constexpr int bytes_per_item = 25;
constexpr UINT16 sample_tag = 0xC7E1;
constexpr UINT16 message_tag = 0x1800;
constexpr int message_distance = 500;  // samples from one message to the next
constexpr int message_delay = 20;      // samples that a message comes late
constexpr int disorder = 200;          // entries within which all are out of order

GZDItem item_at(int place, int type, UINT16 tag, UINT64 stamp) {
  return {INT64{place} * bytes_per_item, type, SIDE_NONE, tag, stamp};
}

std::vector<GZDItem> ordered() {
  std::vector<GZDItem> items;
  items.reserve(item_count);
  for (int i = 0; i < item_count; ++i)
    items.push_back(item_at(i, GZD_SAMPLE, sample_tag, 2 * static_cast<UINT64>(i)));
  return items;
}

std::vector<GZDItem> with_late_messages() {
  std::vector<GZDItem> items = ordered();
  for (int i = message_distance; i < item_count; i += message_distance)
    items[static_cast<std::size_t>(i)] =
        item_at(i, GZD_MESSAGE, message_tag, 2 * static_cast<UINT64>(i - message_delay));
  return items;
}

std::vector<GZDItem> disordered() {
  std::vector<GZDItem> items = ordered();
  std::mt19937 random(1);
  std::uniform_int_distribution<std::size_t> distance(0, disorder);
  for (std::size_t i = 0; i + disorder < items.size(); ++i)
    std::swap(items[i], items[i + distance(random)]);
  return items;
}

void sort(benchmark::State& state, std::vector<GZDItem> (*make)()) {
  const std::vector<GZDItem> items = make();
  for ([[maybe_unused]] auto step : state) {
    state.PauseTiming();
    Index index;
    for (const GZDItem& item : items) index.gzdItemList.push_back(item);
    state.ResumeTiming();
    sortItems(index);
    benchmark::DoNotOptimize(index.gzdItemList.size());
    state.PauseTiming();
    index = Index();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * item_count);
}

BENCHMARK_CAPTURE(sort, in_order, ordered)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sort, late_messages, with_late_messages)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sort, disordered, disordered)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
