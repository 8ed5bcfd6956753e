// What reading, checks and repairs found in a recording, with names and sentences.
#ifndef GZDTABLES_FINDINGS_H
#define GZDTABLES_FINDINGS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recording.h"

namespace gzdtables {

// Kinds beside the library's: what comparing samples and events shows.
constexpr int finding_times_repeat = 1000;
constexpr int finding_fixations_shifted = 1001;

// One finding. Times are milliseconds, as in every table.
struct Finding {
  int kind = 0;                       // GZD_FINDING_
  std::string_view name;              // of the kind, as machines read it: "samples_end_early"
  std::string_view eye;               // "left", "right", "both", or empty
  std::optional<double> start, end;   // what the two mean depends on the kind
  std::int64_t count = 0;             // samples, bytes, messages, by the kind
  int detail = 0;                     // a type, a code, a rate, by the kind
  std::optional<std::int64_t> place;  // byte of the record stream
  std::uint32_t merged = 1;           // findings of this kind that this one stands for
  std::string note = {};              // more words
};

// A finding of a kind, with its name.
[[nodiscard]] Finding make_finding(int kind);

// All findings of the library, in the order in which they were made.
[[nodiscard]] std::vector<Finding> findings_of(Recording& recording);

// Whether the library filled in samples.
[[nodiscard]] bool has_filled(const std::vector<Finding>& findings);

// The finding in words: "right eye, 113,526 to 113,691 ms: samples end before their block".
[[nodiscard]] std::string sentence_of(const Finding& finding);

// The same without eye and times, and without the count.
[[nodiscard]] std::string_view words_of(const Finding& finding);

// A number with commas between thousands: "113,526", "113,526.5".
[[nodiscard]] std::string with_commas(double number);

}  // namespace gzdtables

#endif
