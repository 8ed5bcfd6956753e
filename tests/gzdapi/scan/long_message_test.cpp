#include "scan/long_message.h"

#include <gtest/gtest.h>

#include "support/recording_fixture.h"

using namespace gzd;

namespace {

TEST(MessagePieces, Markers) {
  struct Case {
    const char* text;
    MessagePiece piece;
    const char *marker, *rest;
  };
  const Case cases[] = {
      {"plain", MessagePiece::Whole, "", "plain"},
      {"!V LONGMS", MessagePiece::Whole, "", "!V LONGMS"},
      {"!V LONGMS_ST 7_text_more", MessagePiece::First, "!V LONGMS_ST 7_", "text_more"},
      {"!V LONGMS_CONT 7_text", MessagePiece::Continuation, "!V LONGMS_CONT 7_", "text"},
      {"12 !V LONGMS_ST 7_text", MessagePiece::First, "!V LONGMS_ST 7_", "12 text"},
      {"!V LONGMS_ST without", MessagePiece::First, "!V LONGMS_ST", " without"},
      {"!V LONGMS_ST_text", MessagePiece::First, "!V LONGMS_ST_", "text"},
      {"!V LONGMS_CONT_!V LONGMS_ST_", MessagePiece::First, "!V LONGMS_ST_", "!V LONGMS_CONT_"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(piece_of_message(c.text), c.piece) << c.text;
    EXPECT_EQ(get_msg_marker(c.text), c.marker) << c.text;
    EXPECT_EQ(without_marker(c.text), c.rest) << c.text;
  }
}

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

TEST(LongMessage, PiecesJoinInFileOrder) {
  gzdsynth::GzdWriter w;
  w.message(10, "!V LONGMS_ST 1_one ").message(9, "!V LONGMS_CONT 1_two ");
  w.message(10, "!V LONGMS_CONT 2_three");
  EXPECT_EQ(first_message(w).text, "one two three");
  EXPECT_EQ(first_message(w).len, 13);
}

TEST(LongMessage, PiecesJoinTheGroupOpenedLast) {
  gzdsynth::GzdWriter w;
  w.message(10, "!V LONGMS_CONT 1_dropped").message(11, "!V LONGMS_ST 1_a");
  w.message(12, "!V LONGMS_ST 2_b").message(13, "!V LONGMS_CONT 1_c").message(14, "between");
  w.message(15, "!V LONGMS_CONT 2_d");
  OpenRecording file(w);
  std::string texts;
  while (const ALLF_DATA* record = file.nextOf(GZD_MESSAGE)) {
    texts += std::to_string(record->fe.sttime) + &record->fe.message->c + " ";
  }
  EXPECT_EQ(texts, "11a 12bcd 14between ");
}

TEST(LongMessage, LengthFieldStopsTheTextDoesNot) {
  std::string text(40'000, 'x');
  text[39'999] = '!';
  const Message message = first_message(gzdsynth::GzdWriter().longMessage(5, 1, text));
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
