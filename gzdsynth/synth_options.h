// The command line of gzdsynth.
#ifndef GZDSYNTH_SYNTH_OPTIONS_H
#define GZDSYNTH_SYNTH_OPTIONS_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "session_settings.h"

namespace gzdsynth {

// A command line that cannot be obeyed; the text is for the user.
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct SynthCommand {
  bool help = false;
  bool version = false;
  SessionSettings settings;
};

// Throws UsageError. With --help or --version nothing else is checked.
SynthCommand parse_command(const std::vector<std::string_view>& arguments);

// The text of --help, made of the same table that parses.
std::string usage_text();

}  // namespace gzdsynth

#endif
