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
  void declare(CLI::App& app);
  // Throws gzdtables::UsageError.
  [[nodiscard]] gzdtables::Options options() const;

 private:
  bool no_repair_ = false, failsafe_ = false, message_offsets_ = false, message_log_ = false;
  std::string trial_start_, trial_end_;
  std::vector<std::string> variables_;  // NAME=REGEX
  const CLI::App* app_ = nullptr;
};

// The name that a recording goes by in tables and file names: its file name without folder and
// ".gzd".
[[nodiscard]] std::string name_of_recording(const std::string& path);

}  // namespace gzdtool

#endif
