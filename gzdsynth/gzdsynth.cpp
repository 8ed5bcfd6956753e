// gzdsynth: writes synthetic recordings.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "companions.h"
#include "session.h"
#include "synth_options.h"

namespace {

using namespace gzdsynth;

void cut_file(const std::string& path, std::uint64_t bytes) {
  const std::uint64_t size = std::filesystem::file_size(path);
  std::filesystem::resize_file(path, size - std::min(size, bytes));
}

void write_companions(const SessionSettings& settings, const std::vector<TrialSpan>& trials) {
  if (!settings.messageLog.empty()) {
    Bytes log;
    put_text(log, message_log_text(trials));
    save_bytes(log, settings.messageLog);
  }
  if (!settings.videoTable) return;
  for (std::size_t i = 0; i < trials.size(); ++i)
    save_bytes(frame_table_bytes(trials[i]), frame_table_name(settings.output, i));
}

void write_recording(const SessionSettings& settings) {
  GzdWriter writer = session_writer(settings);
  writer.stream_to(settings.output);
  const std::vector<TrialSpan> trials = Session(settings, writer).run();
  writer.finish();
  if (settings.cut > 0) cut_file(settings.output, settings.cut);
  write_companions(settings, trials);
}

int run(const std::vector<std::string_view>& arguments) {
  const SynthCommand command = parse_command(arguments);
  if (command.help) {
    std::fputs(usage_text().c_str(), stdout);
  } else if (command.version) {
    std::puts("gzdsynth " GZDSYNTH_VERSION);
  } else {
    write_recording(command.settings);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc});
  } catch (const UsageError& error) {
    std::fprintf(stderr, "gzdsynth: %s (--help tells more)\n", error.what());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gzdsynth: %s\n", error.what());
  }
  return 1;
}
