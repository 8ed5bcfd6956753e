// What is in a recording, in a few numbers and lines.
#ifndef GZDTABLES_FACTS_H
#define GZDTABLES_FACTS_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "findings.h"
#include "recording.h"

namespace gzdtables {

// A message that tells of the set-up.
struct Note {
  double time = 0;  // ms
  std::string text;
};

// Elements of the walk by kind. Eye events are those that ended.
struct ElementCounts {
  std::int64_t samples = 0, fixations = 0, saccades = 0, blinks = 0;
  std::int64_t messages = 0, buttons = 0, inputs = 0, blocks = 0;
};

// What the library did to the recording.
struct RepairCounts {
  std::int64_t samples_filled = 0, samples_dropped = 0;
  std::int64_t events_retimed = 0, blink_starts_inserted = 0;
};

struct BlockFacts {
  double start = 0;           // ms
  std::optional<double> end;  // ms; none when no end closes the block
  double rate = 0;            // Hz
  std::string_view eyes;      // "left", "right", "both", or empty
  std::int64_t samples = 0, filled = 0;
};

struct Facts {
  std::string file;
  std::int64_t bytes = 0;
  bool compressed = false;
  std::vector<std::string> preamble;  // lines without their stars, as UTF-8
  std::string date;                   // what the preamble says of it; may be empty
  int generation = 0, revision = 0;
  bool utf8 = true;                // no text of a message is anything else
  std::optional<double> duration;  // ms from the first to the last element
  ElementCounts elements;
  std::optional<std::array<double, 4>> display;  // left, top, right, bottom (px)
  std::vector<Note> calibrations, validations;
  std::int64_t replaced_messages = 0;  // those that are not UTF-8
  RepairCounts repairs;
  std::optional<std::int64_t> damaged_at;  // byte of the record stream where reading stopped
  std::vector<Finding> findings;
  std::vector<BlockFacts> blocks;
};

// Walks over all elements; samples are counted, not fetched. Throws ReadError.
[[nodiscard]] Facts facts_of(Recording& recording);

}  // namespace gzdtables

#endif
