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

void cutFile(const std::string& path, std::uint64_t bytes) {
  const std::uint64_t size = std::filesystem::file_size(path);
  std::filesystem::resize_file(path, size - std::min(size, bytes));
}

void writeCompanions(const SessionSettings& settings, const std::vector<TrialSpan>& trials) {
  if (!settings.messageLog.empty()) {
    Bytes log;
    putText(log, messageLogText(trials));
    saveBytes(log, settings.messageLog);
  }
  if (!settings.videoTable) return;
  for (std::size_t i = 0; i < trials.size(); ++i)
    saveBytes(frameTable(trials[i]), frameTableName(settings.output, i));
}

void writeRecording(const SessionSettings& settings) {
  GzdWriter writer = sessionWriter(settings);
  writer.streamTo(settings.output);
  const std::vector<TrialSpan> trials = Session(settings, writer).run();
  writer.finish();
  if (settings.cut > 0) cutFile(settings.output, settings.cut);
  writeCompanions(settings, trials);
}

int run(const std::vector<std::string_view>& arguments) {
  const SynthCommand command = parseCommand(arguments);
  if (command.help) {
    std::fputs(usageText().c_str(), stdout);
  } else if (command.version) {
    std::puts("gzdsynth " GZDSYNTH_VERSION);
  } else {
    writeRecording(command.settings);
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
