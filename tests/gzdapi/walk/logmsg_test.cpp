// Times in the lines of a message log, and a log that shrinks.
#include "walk/logmsg.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/GZDException.h"
#include "support/log_file.h"

using namespace gzd;

namespace {

constexpr const char* sync_line = "100.0 TRACKER_TIME 1 5000.0\n";
constexpr const char* quit_line = "999 Quit logger\n";

// "time|text" of every message of a log with these lines.
std::vector<std::string> messages_of(const std::string& lines, bool* loaded = nullptr) {
  const LogFile file(lines);
  MessageLog log;
  const int count = file.openIn(log);
  if (loaded != nullptr) *loaded = log.isLoaded();
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) {
    log.getEyeLogMsg(i);
    result.push_back(std::to_string(log.messages()[static_cast<std::size_t>(i)].time) + "|" +
                     std::string(log.text()));
  }
  return result;
}

using Lines = std::vector<std::string>;

TEST(MessageLog, OnlyFiniteDecimalNumbersAreTimes) {
  EXPECT_EQ(messages_of(std::string(sync_line) + "no number\n\nnan x\ninf x\n1e999 x\n" +
                        std::string(400, '9') +
                        " x\n-9000 neg\n1.5e2x\n +120 plus\n. x\n-1e-999 tiny\n0." +
                        std::string(400, '0') + "1e9 tinier\n4294962395 last\n4294962396 far\n" +
                        "1e300 further\n" + quit_line),
            (Lines{"5000| TRACKER_TIME 1 5000.0", "0| neg", "5050|x", "5020| plus", "4900| tiny",
                   "4900| tinier", "4294967295| last", "4294967295| far", "4294967295| further"}));
}

// A message that is now cut, or gone, is none that was empty.
TEST(MessageLog, ALogThatShrinksIsAnError) {
  const std::string head = std::string(sync_line) + "110 a\n120 b";
  for (const std::size_t left : {head.size() + 1, head.size(), head.size() - 2, std::size_t{0}}) {
    const LogFile file(head + "\n" + std::string(9000, ' ') + "\n" + quit_line);
    MessageLog log;
    ASSERT_EQ(file.openIn(log), 3);
    ASSERT_EQ(truncate(file.path.c_str(), static_cast<off_t>(left)), 0);
    if (left > head.size()) {
      EXPECT_STREQ(log.getEyeLogMsg(2), "5020 b\n");
    } else {
      EXPECT_THROW(log.getEyeLogMsg(2), GZDException) << left;
    }
  }
}

}  // namespace
