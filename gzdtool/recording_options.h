// Options of every verb that reads recordings.
#ifndef GZDTOOL_RECORDING_OPTIONS_H
#define GZDTOOL_RECORDING_OPTIONS_H

#include <string>
#include <vector>

#include "tables/recording.h"

namespace CLI {
class App;
}

namespace gzdtool {

class RecordingOptions {
 public:
  // All of them, or without those of trials and --failsafe.
  void declare(CLI::App& app);
  void declare_basic(CLI::App& app);
  // Throws gzdtables::UsageError.
  [[nodiscard]] gzdtables::Options options() const;

 private:
  bool no_repair_ = false, failsafe_ = false, message_offsets_ = false, message_log_ = false;
  std::string trial_start_, trial_end_;
  std::vector<std::string> variables_;  // NAME=REGEX
  const CLI::App* app_ = nullptr;       // of all options
};

// The library's log, kept back while this lives; findings tell the same. `tell` prints what was
// kept to standard error, for a recording that cannot be opened.
class KeptLog {
 public:
  KeptLog();
  ~KeptLog();
  KeptLog(const KeptLog&) = delete;
  KeptLog& operator=(const KeptLog&) = delete;
  static void tell();
  static void clear();
};

// The library's messages to standard error, from now on.
void log_to_standard_error();

// An error with the system's part in it.
[[nodiscard]] std::string sentence_of(const gzdtables::ReadError& error);

// The path without ".gzd" in any case; the same path when it does not end so.
[[nodiscard]] std::string without_extension(const std::string& path);

// The name that a recording goes by in tables and file names: its file name without folder and
// ".gzd".
[[nodiscard]] std::string name_of_recording(const std::string& path);

}  // namespace gzdtool

#endif
