// An open recording, to be read as tables:
//
//     gzdtables::Recording recording("trial.gzd", {.trials = {.start = "TRIALID"}});
//     gzdtables::TableReader reader(recording, {.table = gzdtables::Table::samples});
//     gzdtables::Batch batch;
//     while (reader.next(batch)) use(reader.schema(), batch);
//
// Times are milliseconds of the tracker's clock, never shifted. Rows come in the order of the
// library's walk, repaired unless that is switched off. The library keeps process-wide state:
// recordings are opened and read by one thread at a time.
#ifndef GZDTABLES_RECORDING_H
#define GZDTABLES_RECORDING_H

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "gzd.h"

namespace gzdtables {

// A recording that cannot be opened, or not be read again. `what()` has no file name in it; why,
// the library's log function was told.
class ReadError : public std::runtime_error {
 public:
  explicit ReadError(const std::string& what, int reason = 0)
      : std::runtime_error(what), reason_(reason) {}
  // The system's part in it: an errno, or 0.
  [[nodiscard]] int reason() const { return reason_; }

 private:
  int reason_;
};

// What cuts a recording into trials.
struct TrialRule {
  // A message that contains this opens a trial and ends one that is open. Without it each
  // recording block is a trial.
  std::optional<std::string> start = {};
  // A message that contains this ends the trial. Needs `start`.
  std::optional<std::string> end = {};
  // Columns of `trials`: a name, and a POSIX extended regular expression with one group, whose
  // match in the last message of the trial that matches is the value.
  std::vector<std::pair<std::string, std::string>> variables = {};
};

struct Options {
  bool repair = true;            // fill gaps, pair blinks, mend fixations
  bool failsafe = false;         // of a damaged recording all that comes before the damage
  bool message_offsets = false;  // a number at the start of a message is an offset of its time
  bool message_log = false;      // merge the experiment's message log
  TrialRule trials = {};
  bool checks =
      false;  // without `repair`: what lies outside blocks is moved or dropped all the same
};

// Throws UsageError for options without sense.
void check_options(const Options& options);

struct Outline;

// One walk over the elements of a file is under way at a time: a new reader ends the one before.
class Recording {
 public:
  // Opens and indexes the file. Throws ReadError, and UsageError for options that cannot be met.
  explicit Recording(const std::string& path, const Options& options = {});
  ~Recording();
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const Options& options() const { return options_; }
  [[nodiscard]] GZDFILE* handle() const { return handle_.get(); }
  // Elements of the walk; no table but `inputs` has more rows (that one at most eight times as
  // many).
  [[nodiscard]] std::uint32_t element_count() const;
  // GZD_TRACKER_: of the tracker.
  [[nodiscard]] int generation() const;

  // Samples of the walk, those filled in too; 0 when messages of the experiment's log are merged.
  // Counted by a walk of its own at the first call.
  [[nodiscard]] std::uint32_t sample_count();

  // Blocks, trials and eye events by time. Made by a walk of its own at the first call, unless
  // another walk made it on its way.
  [[nodiscard]] Outline& outline();
  [[nodiscard]] bool has_outline() const { return outline_ != nullptr; }
  void keep_outline(Outline outline);

  // Begins a walk from the first element, and returns its number.
  [[nodiscard]] std::uint64_t begin_walk();
  [[nodiscard]] bool is_walking(std::uint64_t walk) const { return walk == walk_; }

 private:
  struct Close {
    void operator()(GZDFILE* file) const { gzd_close_file(file); }
  };

  std::string path_;
  Options options_;
  std::unique_ptr<GZDFILE, Close> handle_;
  std::unique_ptr<Outline> outline_;
  std::optional<std::uint32_t> sample_count_;
  std::uint64_t walk_ = 0;
};

}  // namespace gzdtables

#endif
