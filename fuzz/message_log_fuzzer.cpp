// Any bytes as the message log of an experiment.
//
// Asserts: the count is that of the messages; without a sync line or the closing line nothing is
// merged; times stay within their limit; every message begins with its time, its record holds the
// first 260 characters of its text, and it is the same whenever and in whatever order it is asked
// for; a second reading finds the same messages and clocks.
#include "walk/logmsg.h"

#include <vector>

#include "fuzz_support.h"

using namespace gzd;

namespace {

constexpr std::size_t RECORD_TEXT = 260;

struct Message {
  std::string line, text;
  UINT32 time;
  bool operator==(const Message&) const = default;
};

Message read_message(MessageLog& log, int number) {
  const std::string line = log.getEyeLogMsg(number);
  const FEVENT& event = log.record().fe;
  const std::string text(log.text());
  const UINT64 time = log.messages()[static_cast<std::size_t>(number)].time;
  FUZZ_REQUIRE(time <= LARGEST_LOG_TIME);
  FUZZ_REQUIRE(line.starts_with(std::to_string(time)));
  FUZZ_REQUIRE(event.type == GZD_MESSAGE && event.entime == 0);
  FUZZ_REQUIRE(event.sttime == static_cast<UINT32>(time));
  FUZZ_REQUIRE(event.message != nullptr);
  FUZZ_REQUIRE(event.message->len == static_cast<INT16>(std::min(text.size(), RECORD_TEXT)));
  FUZZ_REQUIRE(std::string_view(text).starts_with(text_of(event.message)));
  FUZZ_REQUIRE(text.find('\n') == std::string::npos);
  return {line, text, event.sttime};
}

std::vector<Message> read_all(MessageLog& log) {
  std::vector<Message> all;
  all.reserve(static_cast<std::size_t>(log.getNumOfLogMsg()));
  for (int i = 0; i < log.getNumOfLogMsg(); ++i) all.push_back(read_message(log, i));
  return all;
}

void open_log(MessageLog& log, const std::string& path) {
  log.setEyeLogFileName(path.c_str());
  const int count = log.openEyeLogFile();
  FUZZ_REQUIRE(count >= 0 && count == log.getNumOfLogMsg());
  FUZZ_REQUIRE(static_cast<std::size_t>(count) == log.messages().size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file("log");
  file.set({data, size});
  const std::string_view content = fuzz::text_of({data, size});
  MessageLog log, again;
  open_log(log, file.path());
  open_log(again, file.path());
  FUZZ_REQUIRE(log.isLoaded() == again.isLoaded());
  FUZZ_REQUIRE(log.syncs().size() == again.syncs().size());
  if (log.isLoaded()) {
    FUZZ_REQUIRE(!log.syncs().empty());
    FUZZ_REQUIRE(content.find("Quit logger") != std::string_view::npos);
  }
  FUZZ_REQUIRE(log.messages().size() <=
               static_cast<std::size_t>(std::count(content.begin(), content.end(), '\n')) +
                   content.size() / 4095 + 1);
  const std::vector<Message> all = read_all(log);
  FUZZ_REQUIRE(all == read_all(again));
  for (int i = log.getNumOfLogMsg() - 1; i >= 0; i -= 3)
    FUZZ_REQUIRE(read_message(log, i) == all[static_cast<std::size_t>(i)]);
  return 0;
}
