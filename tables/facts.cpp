// One walk for counts and messages; the rest is asked of the library and of the file's first line.
#include "facts.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "element_walk.h"
#include "utf8.h"

namespace gzdtables {

namespace {

std::int64_t bytes_of(const std::string& path) {
  struct stat facts {};
  return ::stat(path.c_str(), &facts) == 0 ? static_cast<std::int64_t>(facts.st_size) : 0;
}

bool is_compressed(const std::string& path) {
  constexpr std::size_t longest_magic = 35;
  std::string line(longest_magic, '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(line.data(), static_cast<std::streamsize>(line.size()));
  line.resize(std::min(line.find('\n'), static_cast<std::size_t>(file.gcount())));
  if (line.ends_with('\r')) line.pop_back();
  return line.ends_with(" ZIP");
}

std::vector<std::string> preamble_of(GZDFILE* file) {
  std::string text(static_cast<std::size_t>(gzd_get_preamble_text_length(file)), '\0');
  if (text.empty()) return {};
  gzd_get_preamble_text(file, text.data(), static_cast<int>(text.size()));
  text.resize(text.find('\0'));
  constexpr std::string_view stars = "** ";
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = std::min(text.find('\n', from), text.size());
    std::string line = as_utf8(std::string_view(text).substr(from, end - from));
    if (line.ends_with('\r')) line.pop_back();
    if (line.starts_with(stars)) line.erase(0, stars.size());
    if (!line.empty()) lines.push_back(line);
    from = end + 1;
  }
  return lines;
}

std::string date_in(const std::vector<std::string>& preamble) {
  constexpr std::string_view mark = "DATE:";
  for (const std::string& line : preamble)
    if (line.starts_with(mark)) {
      const std::size_t text = line.find_first_not_of(' ', mark.size());
      return text == std::string::npos ? "" : line.substr(text);
    }
  return "";
}

std::optional<std::array<double, 4>> display_in(const std::string& text) {
  std::array<double, 4> edges{};
  const int read = std::sscanf(text.c_str(), "DISPLAY_COORDS %lf %lf %lf %lf", edges.data(),
                               &edges[1], &edges[2], &edges[3]);
  const bool is_whole = read == 4 && std::all_of(edges.begin(), edges.end(),
                                                 [](double edge) { return std::isfinite(edge); });
  return is_whole ? std::optional(edges) : std::nullopt;
}

std::string_view eyes_of(const RECORDINGS& block) {
  constexpr std::array<std::string_view, 4> names{"", "left", "right", "both"};
  return block.eye <= GZD_BLOCK_BOTH ? names.at(block.eye) : "";
}

class FactsWalk {
 public:
  FactsWalk(Recording& recording, Facts& facts)
      : recording_(recording),
        file_(recording.handle()),
        facts_(facts),
        has_filled_(has_filled(facts.findings)) {}

  void run();

 private:
  void count_sample();
  void take(int code);
  void take_recording(const RECORDINGS& record);
  void take_message(const FEVENT& message);
  void note_time(double time);
  void note_time_of_last_sample();

  Recording& recording_;
  GZDFILE* file_;
  Facts& facts_;
  const bool has_filled_;  // else origins need not be asked for
  BlockFacts* block_ = nullptr;
  std::optional<double> first_, last_;
  std::uint64_t step_ = 0;
  std::uint64_t unfetched_sample_ = 0;  // step of a sample behind what was fetched last, or 0
};

void FactsWalk::run() {
  static_cast<void>(recording_.begin_walk());
  while (const int code = gzd_get_next_data(file_)) {
    ++step_;
    if (code == GZD_SAMPLE && first_)
      count_sample();
    else
      take(code);
  }
  if (unfetched_sample_ != 0) note_time_of_last_sample();
  if (first_) facts_.duration = *last_ - *first_;
}

void FactsWalk::count_sample() {
  const bool is_filled = has_filled_ && gzd_get_element_origin(file_) == GZD_ORIGIN_GAP;
  std::int64_t& count = is_filled ? facts_.repairs.samples_filled : facts_.elements.samples;
  ++count;
  if (block_ != nullptr) ++(is_filled ? block_->filled : block_->samples);
  unfetched_sample_ = step_;
}

void FactsWalk::take(int code) {
  const ALLF_DATA* const record = gzd_get_float_data(file_);
  if (record == nullptr && gzd_get_system_error(file_) == 0) return;  // of an unknown kind
  if (record == nullptr) throw ReadError("an element could not be read again");
  unfetched_sample_ = 0;
  ElementCounts& counts = facts_.elements;
  switch (code) {
    case GZD_SAMPLE:
      note_time(time_of(record->fs));
      count_sample();
      unfetched_sample_ = 0;
      return;
    case GZD_RECORDING:
      note_time(record->rec.time);
      return take_recording(record->rec);
    case GZD_MESSAGE:
      ++counts.messages;
      take_message(record->fe);
      break;
    case GZD_BUTTON:
      ++counts.buttons;
      break;
    case GZD_INPUT:
      ++counts.inputs;
      break;
    case GZD_END_FIXATION:
      ++counts.fixations;
      break;
    case GZD_END_SACCADE:
      ++counts.saccades;
      break;
    case GZD_END_BLINK:
      ++counts.blinks;
      break;
    default:
      break;
  }
  note_time(is_ended_event(code) ? record->fe.entime : record->fe.sttime);
}

void FactsWalk::take_recording(const RECORDINGS& record) {
  if (record.state == GZD_BLOCK_END) {
    if (block_ != nullptr) block_->end = record.time;
    block_ = nullptr;
    return;
  }
  ++facts_.elements.blocks;
  facts_.blocks.push_back({.start = static_cast<double>(record.time),
                           .end = {},
                           .rate = static_cast<double>(record.sample_rate),
                           .eyes = eyes_of(record)});
  block_ = &facts_.blocks.back();
}

void FactsWalk::take_message(const FEVENT& message) {
  const char* const bytes = text_of(message);
  if (bytes == nullptr) return;
  const std::string_view raw(bytes);
  const bool is_replaced = !is_utf8(raw);
  facts_.replaced_messages += is_replaced ? 1 : 0;
  const bool is_display = raw.starts_with("DISPLAY_COORDS");
  const bool is_calibration = raw.starts_with("CALIBRATION");
  if (is_display) {
    if (const auto display = display_in(std::string(raw))) facts_.display = display;
  } else if (is_calibration || raw.starts_with("VALIDATION")) {
    auto& notes = is_calibration ? facts_.calibrations : facts_.validations;
    notes.push_back({static_cast<double>(message.sttime), as_utf8(raw)});
  }
}

void FactsWalk::note_time(double time) {
  if (!first_) first_ = time;
  last_ = time;
}

// The walk ended with a sample: goes there once more.
void FactsWalk::note_time_of_last_sample() {
  static_cast<void>(recording_.begin_walk());
  for (std::uint64_t step = 0; step < unfetched_sample_; ++step)
    if (gzd_get_next_data(file_) == GZD_END_OF_DATA) return;
  const ALLF_DATA* const record = gzd_get_float_data(file_);
  if (record != nullptr) note_time(time_of(record->fs));
}

void count_repairs(Facts& facts) {
  for (const Finding& finding : facts.findings) {
    if (finding.kind == GZD_FINDING_SAMPLES_DROPPED) facts.repairs.samples_dropped += finding.count;
    if (finding.kind == GZD_FINDING_EVENT_RETIMED) facts.repairs.events_retimed += finding.merged;
    if (finding.kind == GZD_FINDING_BLINK_START_INSERTED)
      facts.repairs.blink_starts_inserted += finding.merged;
    const bool is_damage = finding.kind == GZD_FINDING_CUT || finding.kind == GZD_FINDING_DAMAGE ||
                           finding.kind == GZD_FINDING_READ_ERROR;
    if (is_damage && !facts.damaged_at) facts.damaged_at = finding.place;
  }
}

}  // namespace

Facts facts_of(Recording& recording) {
  Facts facts;
  GZDFILE* const file = recording.handle();
  facts.file = recording.path();
  facts.bytes = bytes_of(recording.path());
  facts.compressed = is_compressed(recording.path());
  facts.preamble = preamble_of(file);
  facts.date = date_in(facts.preamble);
  facts.generation = recording.generation();
  facts.revision = gzd_get_revision(file);
  facts.findings = findings_of(recording);
  FactsWalk(recording, facts).run();
  facts.utf8 = facts.replaced_messages == 0;
  count_repairs(facts);
  return facts;
}

}  // namespace gzdtables
