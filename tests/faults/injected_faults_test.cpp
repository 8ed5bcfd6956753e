// Every call of one function fails once, over a small conversion: the k-th one, for every k. The
// run ends with status 0 and the whole text, or with status 1, a message and no text; never by a
// signal, and never with status 0 and less than the whole text. A message log that cannot be read
// counts as none, and so may a message of it.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "converter_run.h"
#include "recordings.h"

namespace {

struct Fault {
  const char* call;
  bool compressed;
  bool for_good;  // this call and all behind it
  bool with_log;  // merges the experiment's message log
};

std::string name_of(const testing::TestParamInfo<Fault>& info) {
  return std::string(info.param.call) + (info.param.compressed ? "_compressed" : "_plain") +
         (info.param.for_good ? "_for_good" : "") + (info.param.with_log ? "_log" : "");
}

constexpr const char* message_log =
    "10 TRACKER_TIME 1 1000.0 of the log\n15 of the log\n20 also of the log\n2000 Quit logger\n";
constexpr const char* log_mark = "of the log";

class InjectedFault : public testing::TestWithParam<Fault> {
 protected:
  InjectedFault() {
    gzdsynth::GzdWriter writer = small_recording();
    if (GetParam().compressed) writer.magic(gzdsynth::Magic::kFalcZip);
    writer.save(scratch / "rec.gzd");
    std::ofstream(scratch / "tq_messages.log") << message_log;
  }

  Outcome run(long at) const {
    std::filesystem::remove(scratch / "rec.asc");
    return run_converter({"-y", GetParam().for_good ? "-vel" : "-q",
                          GetParam().with_log ? "-logmsg" : "-vel", "rec.gzd"},
                         {.directory = scratch.path(),
                          .faults = {{"FAULT_CALL", GetParam().call},
                                     {"FAULT_AT", std::to_string(at)},
                                     {"FAULT_EVERY", GetParam().for_good ? "1" : "0"},
                                     {"FAULT_REPORT", scratch / "calls"}}});
  }

  // The text, without what the log has added to it.
  [[nodiscard]] std::string text() const {
    std::istringstream lines(without_date(content_of(scratch / "rec.asc")));
    std::string kept;
    for (std::string line; std::getline(lines, line);)
      if (line.find(log_mark) == std::string::npos) kept += line + '\n';
    return kept;
  }

  ScratchDirectory scratch;
};

// What the system says of the call, where a failure of it ends the conversion by itself.
std::string reason_of(const std::string& call) {
  if (call == "fopen") return "Too many open files";
  if (call == "mkostemp" || call == "fwrite" || call == "fclose") return "No space left on device";
  return "";
}

// One line for the recording, its text or the place of its temporary file.
void expect_reason(const std::string& output, const std::string& reason, long at) {
  const std::size_t place = output.find("gzdconv: ");
  ASSERT_NE(place, std::string::npos) << "call " << at << "\n" << output;
  const std::string line = output.substr(place, output.find('\n', place) - place);
  EXPECT_TRUE(line == "gzdconv: rec.gzd: " + reason || line == "gzdconv: rec.asc: " + reason ||
              line == "gzdconv: /tmp: " + reason)
      << "call " << at << "\n"
      << line;
  EXPECT_EQ(output.find("gzdconv: ", place + 1), std::string::npos) << "call " << at;
}

TEST_P(InjectedFault, EndsWithTheWholeTextOrWithAMessage) {
  ASSERT_TRUE(run(0).ended_well());
  const std::string whole = text();
  const long calls = std::stol(content_of(scratch / "calls"));
  RecordProperty("calls", static_cast<int>(calls));
  ASSERT_FALSE(whole.empty());
  for (long at = 1; at <= calls; ++at) {
    const Outcome outcome = run(at);
    ASSERT_EQ(outcome.signal, 0) << "call " << at << "\n" << outcome.output;
    ASSERT_TRUE(outcome.status == 0 || outcome.status == 1) << "call " << at;
    if (outcome.status == 0) {
      ASSERT_TRUE(text() == whole) << "call " << at << "\n" << outcome.output;
    } else {
      EXPECT_FALSE(outcome.output.empty()) << "call " << at;
      const std::string reason = reason_of(GetParam().call);
      if (!reason.empty()) expect_reason(outcome.output, reason, at);
      EXPECT_FALSE(std::filesystem::exists(scratch / "rec.asc")) << "call " << at;
    }
  }
}

std::vector<Fault> all_faults() {
  std::vector<Fault> faults;
  for (const char* call :
       {"fopen", "fread", "fseek", "fwrite", "fflush", "fclose", "mkostemp", "malloc"}) {
    for (const bool compressed : {false, true}) faults.push_back({call, compressed, false, false});
    faults.push_back({call, true, true, false});
    faults.push_back({call, false, false, true});
  }
  return faults;
}

INSTANTIATE_TEST_SUITE_P(Calls, InjectedFault, testing::ValuesIn(all_faults()), name_of);

}  // namespace
