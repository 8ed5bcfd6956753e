// Any bytes as the message log of an experiment.
//
// Asserts: without a sync line or the closing line nothing is merged; times stay within their
// limit; every message begins with its time, its record holds the first 260 characters of its text,
// and it is the same whenever and in whatever order it is asked for.
#include "harness.h"
#include "walk/logmsg.h"

using namespace gzd;

namespace {

constexpr std::size_t record_text = 260;

std::string read_message(MessageLog& log, int number) {
  const std::string line = log.getEyeLogMsg(number);
  const FEVENT& event = log.record().fe;
  const std::string text(log.text());
  const UINT64 time = log.messages()[static_cast<std::size_t>(number)].time;
  FUZZ_REQUIRE(time <= largest_log_time && line.starts_with(std::to_string(time)));
  FUZZ_REQUIRE(event.type == GZD_MESSAGE && event.entime == 0);
  FUZZ_REQUIRE(event.sttime == static_cast<UINT32>(time) && event.message != nullptr);
  FUZZ_REQUIRE(event.message->len == static_cast<INT16>(std::min(text.size(), record_text)));
  FUZZ_REQUIRE(std::string_view(text).starts_with(text_of(event.message)));
  FUZZ_REQUIRE(text.find('\n') == std::string::npos);
  return line + text;
}

}  // namespace

FUZZ_TARGET(message_log) {
  static fuzz::MemoryFile file("log");
  file.set(input);
  const std::string_view content = fuzz::text_of(input);
  MessageLog log;
  log.setEyeLogFileName(file.path().c_str());
  const int count = log.openEyeLogFile();
  FUZZ_REQUIRE(count >= 0 && count == log.getNumOfLogMsg());
  FUZZ_REQUIRE(static_cast<std::size_t>(count) == log.messages().size());
  if (log.isLoaded()) FUZZ_REQUIRE(content.find("Quit logger") != std::string_view::npos);
  FUZZ_REQUIRE(log.messages().size() <=
               static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n')) +
                   content.size() / 4095 + 1);
  std::vector<std::string> all;
  for (int i = 0; i < count; ++i) all.push_back(read_message(log, i));
  for (int i = count - 1; i >= 0; i -= 3)
    FUZZ_REQUIRE(read_message(log, i) == all[static_cast<std::size_t>(i)]);
}
