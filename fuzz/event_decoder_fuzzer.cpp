// A run of event records from any bytes.
//
// Asserts: a stream that shows everything at once and one that shows a byte at a time give the same
// events, texts, states and positions; a message's text is the decoder's own buffer, its length
// within it and all behind it NUL; an event without an end time ends when it starts; block starts
// leave one of the known rates; with time offsets translated, an event differs in its start time
// and text only, and a text never grows.
#include "record/event_decoder.h"

#include <cstddef>

#include "byte_stream.h"
#include "fuzz_support.h"
#include "record/record_stream.h"

using namespace gzd;

namespace {

constexpr int MOST_RECORDS = 512;

using fuzz::Window;

class Decoder {
 public:
  Decoder(fuzz::Input bytes, Window window, const StreamState& start)
      : stream(bytes, window), state(start) {}

  void next() {
    try {
      ended = next_combfile_item(stream, state) != NextRecord::Event ||
              decode_event(stream, state, state.last_tag, text, event) != 0;
    } catch (const GZDException&) {
      ended = true;
    }
  }

  fuzz::ByteStream stream;
  StreamState state;
  MessageText text;
  FEVENT event{};
  bool ended = false;
};

// All fields but the times and the text; the padding left out.
std::uint64_t digest_of(const FEVENT& e) {
  constexpr std::size_t first_value = offsetof(FEVENT, hstx);
  constexpr std::size_t behind_words = offsetof(FEVENT, parsedby) + sizeof e.parsedby;
  constexpr std::size_t first_pose = offsetof(FEVENT, headInSpaceX_start);
  constexpr std::size_t behind_pose = offsetof(FEVENT, headPositionZ_avg) + sizeof(float);
  const char* const bytes = reinterpret_cast<const char*>(&e);
  return fuzz::Digest()
      .add(e.time)
      .add(e.type)
      .add(e.read)
      .addBytes(bytes + first_value, behind_words - first_value)
      .addBytes(bytes + first_pose, behind_pose - first_pose)
      .value();
}

bool same_text(const Decoder& a, const Decoder& b) {
  if ((a.event.message == nullptr) != (b.event.message == nullptr)) return false;
  return a.event.message == nullptr || (a.text.len == b.text.len && a.text.text == b.text.text);
}

void check_same(const Decoder& a, const Decoder& b) {
  FUZZ_REQUIRE(a.ended == b.ended);
  if (a.ended) return;
  FUZZ_REQUIRE(a.event.sttime == b.event.sttime && a.event.entime == b.event.entime);
  FUZZ_REQUIRE(digest_of(a.event) == digest_of(b.event));
  FUZZ_REQUIRE(same_text(a, b));
  FUZZ_REQUIRE(a.stream.getFilePos() == b.stream.getFilePos());
  // Bytes, since a number that is none equals itself here.
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
  FUZZ_REQUIRE(std::memcmp(&a.state.parameters, &b.state.parameters, sizeof a.state.parameters) ==
               0);
  FUZZ_REQUIRE(a.state.sam_per_sec == b.state.sam_per_sec);
}

void check_event(const Decoder& d) {
  const FEVENT& e = d.event;
  FUZZ_REQUIRE(e.time == 0 && e.type == ((d.state.last_tag >> 8) & 0x3F));
  FUZZ_REQUIRE(e.eye == GZD_LEFT_EYE || e.eye == GZD_RIGHT_EYE);
  if ((e.read & EVT_END_TIME) == 0) FUZZ_REQUIRE(e.entime == e.sttime);
  if (e.type == GZD_START_SAMPLES || e.type == GZD_START_EVENTS) {
    const float rate = d.state.sam_per_sec;
    FUZZ_REQUIRE(rate == 250.0f || rate == 500.0f || rate == 1000.0f || rate == 2000.0f);
  }
  if (e.message == nullptr) return;
  const void* const buffer = &d.text;
  FUZZ_REQUIRE(e.message == buffer);
  FUZZ_REQUIRE(d.text.len >= 0 && d.text.len <= MESSAGE_RECORD_CAPACITY);
  FUZZ_REQUIRE(d.text.text.back() == '\0');
}

// `translated` is the same record with its message offset taken from the time.
void check_translated(const Decoder& plain, const Decoder& translated) {
  FUZZ_REQUIRE(plain.ended == translated.ended);
  if (plain.ended) return;
  FUZZ_REQUIRE(plain.stream.getFilePos() == translated.stream.getFilePos());
  if (plain.event.type != GZD_MESSAGE || plain.event.message == nullptr) {
    check_same(plain, translated);
    return;
  }
  FUZZ_REQUIRE(digest_of(plain.event) == digest_of(translated.event));
  FUZZ_REQUIRE(translated.text.len <= plain.text.len);
  const std::string_view before = text_of(plain.event.message);
  const std::string_view after = text_of(translated.event.message);
  FUZZ_REQUIRE(before.ends_with(after));
  const auto offset = static_cast<INT32>(plain.event.sttime - translated.event.sttime);
  FUZZ_REQUIRE(offset >= -999 && offset <= 999);
  if (offset == 0) FUZZ_REQUIRE(before == after);
}

StreamState state_from(fuzz::Tail& tail) {
  StreamState state;
  state.revision = static_cast<INT16>(tail.byte() % 5);
  state.ovilo_revision = static_cast<INT16>(1 + tail.byte() % 4);
  return state;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Tail tail({data, size});
  const StreamState state = state_from(tail);
  StreamState translating = state;
  translating.enableMsgTimestampOffsetTranslation = true;
  Decoder whole(tail.rest(), Window::Whole, state), bytewise(tail.rest(), Window::Narrow, state);
  Decoder translated(tail.rest(), Window::Whole, translating);
  for (int i = 0; i < MOST_RECORDS; ++i) {
    for (Decoder* decoder : {&whole, &bytewise, &translated}) decoder->next();
    check_same(whole, bytewise);
    check_translated(whole, translated);
    if (whole.ended) break;
    check_event(whole);
  }
  return 0;
}
