// The start times of eye events, held against those that their ends tell.
#include "lines/event_pairs.h"

#include <cstdint>

#include "cli/console.h"
#include "cli/options.h"

namespace gzdconv {

namespace {

constexpr std::uint32_t unknown_time = 0xFFFFFFFF;
constexpr int kinds = 3;
constexpr int eyes = 2;
constexpr const char* kind_names[kinds] = {"BLINK", "SAC", "FIX"};

struct StartTimes {
  std::uint32_t of_start = unknown_time;
  std::uint32_t of_end = unknown_time;
};

StartTimes eventpairs[kinds][eyes];

void check_pair(const char* kind, StartTimes& pair) {
  if (pair.of_start == unknown_time || pair.of_end == unknown_time) return;
  if (pair.of_start != pair.of_end)
    report("start time miss match %s %u %u %d\n", kind, pair.of_start, pair.of_end,
           static_cast<int>(pair.of_start - pair.of_end));
  pair = {};
}

}  // namespace

void note_start_time(const FEVENT& event) {
  const int place = event.type - GZD_START_BLINK;  // starts and ends of a kind follow each other
  StartTimes& pair = eventpairs[place / 2][event.eye == GZD_LEFT_EYE ? 0 : 1];
  (place % 2 == 0 ? pair.of_start : pair.of_end) = event.sttime;
}

void check_start_times() {
  if (!options.verbose) return;
  for (int kind = 0; kind < kinds; ++kind)
    for (StartTimes& pair : eventpairs[kind]) check_pair(kind_names[kind], pair);
}

}  // namespace gzdconv
