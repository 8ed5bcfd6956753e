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

double time_of_element(int code, const ALLF_DATA& record) {
  if (code == GZD_SAMPLE) return time_of(record.fs);
  if (code == GZD_RECORDING) return record.rec.time;
  return is_ended_event(code) ? record.fe.entime : record.fe.sttime;
}

std::int64_t* counter_of(ElementCounts& counts, int code) {
  switch (code) {
    case GZD_END_FIXATION:
      return &counts.fixations;
    case GZD_END_SACCADE:
      return &counts.saccades;
    case GZD_END_BLINK:
      return &counts.blinks;
    case GZD_BUTTON:
      return &counts.buttons;
    case GZD_INPUT:
      return &counts.inputs;
    default:
      return nullptr;
  }
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
  int next();
  void skip_samples();
  bool count_unfetched(int code);
  void count_sample();
  void count_samples(std::int64_t samples, std::int64_t filled);
  void take(int code);
  void take_recording(const RECORDINGS& record);
  void take_message(const FEVENT& message);
  void note_time(double time);
  void note_time_of_last();

  Recording& recording_;
  GZDFILE* file_;
  Facts& facts_;
  const bool has_filled_;  // else origins need not be asked for
  BlockFacts* block_ = nullptr;
  std::optional<double> first_, last_;
  std::uint64_t step_ = 0;
  int last_code_ = GZD_END_OF_DATA;  // of the element at that step
  std::uint64_t unfetched_ = 0;      // step of the last element behind what was fetched last, or 0
};

void FactsWalk::run() {
  static_cast<void>(recording_.begin_walk());
  while (const int code = next()) {
    ++step_;
    last_code_ = code;
    if (first_ && count_unfetched(code))
      unfetched_ = step_;
    else
      take(code);
  }
  if (unfetched_ != 0) note_time_of_last();
  if (first_) facts_.duration = *last_ - *first_;
}

// The code of the next element, samples that need not be seen counted on the way.
int FactsWalk::next() {
  if (first_) skip_samples();
  return gzd_get_next_data(file_);
}

void FactsWalk::skip_samples() {
  unsigned filled = 0;
  const unsigned samples = gzd_skip_samples(file_, has_filled_ ? &filled : nullptr);
  if (samples == 0) return;
  count_samples(samples - filled, filled);
  step_ += samples;
  unfetched_ = step_;
  last_code_ = GZD_SAMPLE;
}

// Counts an element whose record need not be seen; false for any other.
bool FactsWalk::count_unfetched(int code) {
  if (code == GZD_SAMPLE)
    count_sample();
  else if (std::int64_t* const counter = counter_of(facts_.elements, code))
    ++*counter;
  return code != GZD_RECORDING && code != GZD_MESSAGE;
}

// One that was announced and not skipped: the first element, or any where a log is merged.
void FactsWalk::count_sample() {
  const bool is_filled = has_filled_ && gzd_get_element_origin(file_) == GZD_ORIGIN_GAP;
  count_samples(is_filled ? 0 : 1, is_filled ? 1 : 0);
}

void FactsWalk::count_samples(std::int64_t samples, std::int64_t filled) {
  facts_.elements.samples += samples;
  facts_.repairs.samples_filled += filled;
  if (block_ == nullptr) return;
  block_->samples += samples;
  block_->filled += filled;
}

void FactsWalk::take(int code) {
  const ALLF_DATA* const record = gzd_get_float_data(file_);
  if (record == nullptr && gzd_get_system_error(file_) == 0) return;  // of an unknown kind
  if (record == nullptr) throw ReadError("an element could not be read again");
  unfetched_ = 0;
  note_time(time_of_element(code, *record));
  if (code == GZD_RECORDING) return take_recording(record->rec);
  if (code != GZD_MESSAGE) return static_cast<void>(count_unfetched(code));
  ++facts_.elements.messages;
  take_message(record->fe);
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

// The walk ended with elements that were not fetched. The last of them is still at hand, unless
// elements of an unknown kind stand behind it.
void FactsWalk::note_time_of_last() {
  if (unfetched_ != step_) {
    static_cast<void>(recording_.begin_walk());
    for (std::uint64_t step = 0; step < unfetched_; ++step) last_code_ = gzd_get_next_data(file_);
  }
  const ALLF_DATA* const record = gzd_get_float_data(file_);
  if (record != nullptr) note_time(time_of_element(last_code_, *record));
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
