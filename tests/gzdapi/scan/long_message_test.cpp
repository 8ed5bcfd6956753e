// Lengths of long messages, and their limit.
#include "scan/long_message.h"

#include <gtest/gtest.h>

#include "support/recording_fixture.h"

using namespace gzd;

namespace {

// The text of the first message of a recording, and its length field.
struct Message {
  std::string text;
  int len;
};

Message first_message(const gzdsynth::GzdWriter& writer) {
  OpenRecording file(writer);
  const ALLF_DATA* record = file.nextOf(GZD_MESSAGE);
  if (record == nullptr || record->fe.message == nullptr) return {"(none)", -1};
  return {&record->fe.message->c, record->fe.message->len};
}

TEST(LongMessage, LengthFieldStopsTheTextDoesNot) {
  std::string text(40'000, 'x');
  text[39'999] = '!';
  const Message message = first_message(gzdsynth::GzdWriter().long_message(5, 1, text));
  EXPECT_EQ(message.text, text);
  EXPECT_EQ(message.len, 32767);
}

TEST(LongMessage, StopsGrowingAtItsLimit) {
  gzdsynth::GzdWriter w;
  w.message(5, "!V LONGMS_ST_" + std::string(480, 'a'));
  for (int i = 0; i < 200; ++i) w.message(5, "!V LONGMS_CONT_" + std::string(480, 'b'));
  CapturedLog log;
  const Message message = first_message(w);
  EXPECT_EQ(message.text.size(), 136 * 480u);  // 65280 is the first above 65279
  EXPECT_EQ(log.take(), "Long message is longer than 65536 characters.  Truncating it to 65280 \n");
}

TEST(LongMessage, AtTheLimitOnePieceMoreFits) {
  gzdsynth::GzdWriter w;
  w.message(5, "!V LONGMS_ST_" + std::string(479, 'a'));
  for (int i = 0; i < 135; ++i) w.message(5, "!V LONGMS_CONT_" + std::string(480, 'b'));
  w.message(5, "!V LONGMS_CONT_" + std::string(483, 'c'));  // 65279 characters before it
  CapturedLog log;
  EXPECT_EQ(first_message(w).text.size(), 65279 + 483u);
  EXPECT_EQ(log.take(), "");
}

}  // namespace
