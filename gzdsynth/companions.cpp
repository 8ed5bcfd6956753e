#include "companions.h"

#include <cstdio>

namespace gzdsynth {

namespace {

// The log's clock runs at the tracker's speed from another zero.
constexpr double kLogClockOffset = 87654.25;
constexpr std::uint32_t kSyncBeforeBlock = 50;
constexpr std::uint32_t kLineEvery = 150;

constexpr std::uint32_t kFrameMagic = 0xAE5A1000U;
constexpr std::uint32_t kFramePeriod = 33;
constexpr unsigned kOffsetNegative = 0x2000;

std::string logLine(std::uint32_t time, const std::string& text) {
  char number[40];
  std::snprintf(number, sizeof number, "%.3f ", time + kLogClockOffset);
  return number + text + "\n";
}

void putLittle(Bytes& out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) putByte(out, value >> (8 * i));
}

}  // namespace

std::string messageLogText(const std::vector<TrialSpan>& trials) {
  std::string text = "experiment log opened\n";
  int number = 0;
  for (const TrialSpan& trial : trials) {
    const std::uint32_t sync = trial.start - kSyncBeforeBlock;
    text += logLine(sync, "TRACKER_TIME " + std::to_string(number) + " " + std::to_string(sync));
    int line = 0;
    for (std::uint32_t time = trial.start; time < trial.end; time += kLineEvery)
      text +=
          logLine(time, "trial " + std::to_string(number + 1) + " step " + std::to_string(++line));
    ++number;
  }
  return text + "Quit logger\n";
}

// The offset of a frame's time from its entry time alternates between -4, 0 and 4 ms.
Bytes frameTable(const TrialSpan& trial) {
  Bytes records;
  std::uint32_t frame = 0;
  for (std::uint32_t time = trial.start; time <= trial.end; time += kFramePeriod) {
    ++frame;
    const std::uint32_t offset = frame % 3 == 1   ? 4
                                 : frame % 3 == 2 ? kOffsetNegative
                                                  : kOffsetNegative + 4;
    putLittle(records, frame, 4);
    putLittle(records, time, 4);
    putLittle(records, offset, 2);
    putLittle(records, 0, 2);
  }
  Bytes table;
  putLittle(table, frame, 4);
  putLittle(table, kFrameMagic, 4);
  putBytes(table, records);
  return table;
}

std::string frameTableName(const std::string& recording, std::size_t index) {
  return recording.substr(0, recording.size() - 4) + std::to_string(index) + ".ett";
}

}  // namespace gzdsynth
