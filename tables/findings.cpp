// The names of kinds, and sentences made of them.
#include "findings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace gzdtables {

namespace {

// How the times of a kind are told.
enum class Times { span, from_start, at_start, none };

struct Kind {
  std::string_view name, words;
  std::string_view unit = {};  // of the count; empty: the count says nothing
  Times times = Times::span;
};

constexpr std::array<Kind, GZD_FINDING_KINDS> kinds{{
    {"unknown", "something was found"},
    {"cut", "the file ends inside its records", "bytes", Times::at_start},
    {"damage", "the file is damaged, reading stopped", "bytes", Times::at_start},
    {"read_error", "the system could not read on", "bytes", Times::at_start},
    {"unread", "data behind the end of the records were not read", "bytes", Times::at_start},
    {"too_large", "records behind the limit of 2 GB were not read", "bytes", Times::at_start},
    {"gap_filled", "samples are missing, and were filled in", "samples"},
    {"gap_left", "samples are missing, too many to be filled in", "samples"},
    {"block_start_filled", "samples are missing at the start of the block, and were filled in",
     "samples"},
    {"period_mismatch", "the first samples of the block do not follow each other as its rate says"},
    {"periods_shorter", "samples come sooner than their rate says", "samples", Times::none},
    {"periods_longer", "samples come later than their rate says", "samples", Times::none},
    {"samples_dropped", "samples outside recording blocks were dropped", "samples"},
    {"samples_end_early", "samples end before their block", "samples"},
    {"boundaries_swapped", "end and start of two blocks changed places", "", Times::at_start},
    {"rate_assumed", "the block names no known rate, 250 Hz is assumed", "", Times::at_start},
    {"messages_moved", "messages were moved behind the end of their block", "messages"},
    {"event_retimed", "an eye event outside its block was given another time"},
    {"blink_start_inserted", "a start of blink was inserted", "", Times::at_start},
    {"blinks_merged", "two blinks inside one saccade were made one"},
    {"unpaired_event", "an eye event lacks its start or its end", "", Times::at_start},
    {"fixation_ends_first", "a fixation ends before it starts"},
    {"event_skipped", "an event without type or time was skipped", "", Times::none},
    {"unknown_field", "an event holds an unknown field", "", Times::at_start},
    {"unknown_kind", "an event is of an unknown kind", "", Times::none},
    {"message_piece_dropped", "a piece of a long message without its beginning was dropped", "",
     Times::at_start},
    {"log_left_out", "the message log lacks a sync line or its closing line, and was not merged",
     "", Times::none},
}};

constexpr Kind times_repeat{"times_repeat",
                            "samples have the time of the one before, or an earlier", "samples"};
constexpr Kind fixations_shifted{"fixations_shifted",
                                 "means of fixations differ from the samples inside them",
                                 "fixations", Times::none};

const Kind& kind_of(int kind) {
  if (kind == finding_times_repeat) return times_repeat;
  if (kind == finding_fixations_shifted) return fixations_shifted;
  const bool is_known = kind > 0 && kind < GZD_FINDING_KINDS;
  return kinds.at(is_known ? static_cast<std::size_t>(kind) : 0);
}

std::string_view eye_name(int eye) {
  constexpr std::array<std::string_view, 4> names{"", "left", "right", "both"};
  return eye > 0 && eye <= GZD_BLOCK_BOTH ? names.at(static_cast<std::size_t>(eye)) : "";
}

std::optional<double> time_of(double time) {
  return time < 0 ? std::nullopt : std::optional(time);
}

Finding finding_of(const GZD_FINDING& found) {
  Finding finding = make_finding(found.kind);
  finding.eye = eye_name(found.eye);
  finding.start = time_of(found.start);
  finding.end = time_of(found.end);
  finding.count = found.count;
  finding.detail = found.detail;
  if (found.place >= 0) finding.place = found.place;
  finding.merged = found.merged;
  return finding;
}

std::string eye_words(std::string_view eye) {
  if (eye.empty()) return "";
  return eye == "both" ? "both eyes" : std::string(eye) + " eye";
}

// "1 sample", "2 samples".
std::string counted(std::int64_t count, std::string_view unit) {
  if (count == 1) unit.remove_suffix(1);
  return with_commas(static_cast<double>(count)) + " " + std::string(unit);
}

std::string time_words(const Finding& finding) {
  const Times times = kind_of(finding.kind).times;
  if (times == Times::none || !finding.start) return "";
  std::string words = with_commas(*finding.start);
  const bool is_span = times == Times::span && finding.end && *finding.end != *finding.start;
  if (is_span) words += " to " + with_commas(*finding.end);
  return words + " ms";
}

}  // namespace

Finding make_finding(int kind) {
  Finding finding;
  finding.kind = kind;
  finding.name = kind_of(kind).name;
  return finding;
}

std::vector<Finding> findings_of(Recording& recording) {
  std::vector<Finding> findings;
  GZD_FINDING found;
  for (unsigned n = 0; gzd_get_finding(recording.handle(), n, &found) == 0; ++n)
    findings.push_back(finding_of(found));
  return findings;
}

bool has_filled(const std::vector<Finding>& findings) {
  return std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.kind == GZD_FINDING_GAP_FILLED || finding.kind == GZD_FINDING_BLOCK_START_FILLED;
  });
}

std::string_view words_of(const Finding& finding) {
  return kind_of(finding.kind).words;
}

std::string sentence_of(const Finding& finding) {
  std::string sentence = eye_words(finding.eye);
  const std::string times = time_words(finding);
  if (!sentence.empty() && !times.empty()) sentence += ", ";
  sentence += times;
  if (!sentence.empty()) sentence += ": ";
  sentence += words_of(finding);
  const std::string_view unit = kind_of(finding.kind).unit;
  if (!unit.empty()) sentence += " (" + counted(finding.count, unit) + ")";
  if (!finding.note.empty()) sentence += ", " + finding.note;
  if (finding.place) sentence += ", at byte " + with_commas(static_cast<double>(*finding.place));
  if (finding.merged > 1)
    sentence += ", " + with_commas(finding.merged) + " findings of this kind in one";
  return sentence;
}

std::string with_commas(double number) {
  std::array<char, 400> text{};
  const char* const end =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
  std::string result(text.data(), static_cast<std::size_t>(end - text.data()));
  constexpr std::size_t group = 3;
  const std::size_t first = result.starts_with('-') ? 1 : 0;
  const std::size_t point = std::min(result.find('.'), result.size());
  for (std::size_t at = point; at > first + group;) result.insert(at -= group, 1, ',');
  return result;
}

}  // namespace gzdtables
