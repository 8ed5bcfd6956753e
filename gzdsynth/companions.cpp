// Message logs and frame tables, from the times of a session.
#include "companions.h"

#include <cstdio>

namespace gzdsynth {

namespace {

// The log's clock runs at the tracker's speed from another zero.
constexpr double log_clock_offset = 87654.25;
constexpr std::uint32_t sync_before_block = 50;
constexpr std::uint32_t line_every = 150;

constexpr std::uint32_t frame_magic = 0xAE5A1000U;
constexpr std::uint32_t frame_period = 33;
constexpr unsigned offset_negative = 0x2000;

std::string log_line(std::uint32_t time, const std::string& text) {
  char number[40];
  std::snprintf(number, sizeof number, "%.3f ", time + log_clock_offset);
  return number + text + "\n";
}

void put_little(Bytes& out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) put_byte(out, value >> (8 * i));
}

}  // namespace

std::string message_log_text(const std::vector<TrialSpan>& trials) {
  std::string text = "experiment log opened\n";
  int number = 0;
  for (const TrialSpan& trial : trials) {
    const std::uint32_t sync = trial.start - sync_before_block;
    text += log_line(sync, "TRACKER_TIME " + std::to_string(number) + " " + std::to_string(sync));
    int line = 0;
    for (std::uint32_t time = trial.start; time < trial.end; time += line_every)
      text +=
          log_line(time, "trial " + std::to_string(number + 1) + " step " + std::to_string(++line));
    ++number;
  }
  return text + "Quit logger\n";
}

// The offset of a frame's time from its entry time alternates between -4, 0 and 4 ms.
Bytes frame_table_bytes(const TrialSpan& trial) {
  Bytes records;
  std::uint32_t frame = 0;
  for (std::uint32_t time = trial.start; time <= trial.end; time += frame_period) {
    ++frame;
    const std::uint32_t offset = frame % 3 == 1   ? 4
                                 : frame % 3 == 2 ? offset_negative
                                                  : offset_negative + 4;
    put_little(records, frame, 4);
    put_little(records, time, 4);
    put_little(records, offset, 2);
    put_little(records, 0, 2);
  }
  Bytes table;
  put_little(table, frame, 4);
  put_little(table, frame_magic, 4);
  put_bytes(table, records);
  return table;
}

std::string frame_table_name(const std::string& recording, std::size_t index) {
  return recording.substr(0, recording.size() - 4) + std::to_string(index) + ".ett";
}

}  // namespace gzdsynth
