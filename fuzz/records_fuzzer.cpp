// A run of records from any bytes, through both decoders.
//
// Asserts: a stream that shows everything at once and one that shows a byte at a time give the same
// records, texts, states and positions; the scan's glance at a sample moves as far as decoding it
// and sees the same; a sample decoded into one preset for its tag equals one decoded afresh; a
// message's text is the decoder's own buffer, closed by a NUL; an event without an end time ends
// when it starts; a block start leaves a known rate; with time offsets translated, a message
// differs in its time and in what its text begins with only.
#include <cstring>
#include <optional>

#include "harness.h"
#include "record/event_decoder.h"
#include "record/record_stream.h"
#include "record/sample_decoder.h"
#include "support/whole_sample.h"

using namespace gzd;

namespace {

constexpr int most_records = 512;

enum class How { Afresh, Bytewise, Preset, Glance, GlanceBytewise, Translated };

class Decoder {
 public:
  Decoder(fuzz::Input bytes, How how, const StreamState& start)
      : stream(bytes, how == How::Bytewise || how == How::GlanceBytewise), state(start), how_(how) {
    state.enableMsgTimestampOffsetTranslation = how == How::Translated;
  }

  // Reads the next record; `kind` is End when there is none or it is cut.
  void next() {
    try {
      kind = next_combfile_item(stream, state);
      tag = state.last_tag;
      if (kind == NextRecord::Sample) read_sample();
      if (kind == NextRecord::Event && decode_event(stream, state, tag, text, event) != 0)
        kind = NextRecord::End;
    } catch (const GZDException&) {
      kind = NextRecord::End;
    }
  }

  fuzz::ByteStream stream;
  StreamState state;
  NextRecord kind = NextRecord::End;
  UINT16 tag = 0;
  FSAMPLE sample{};
  SampleGlance glance;
  FEVENT event{};
  MessageText text;

 private:
  void read_sample() {
    if (how_ == How::Glance || how_ == How::GlanceBytewise) {
      glance = glance_at_sample(stream, state, tag, layout_);
    } else if (how_ == How::Preset && presetFor_ == tag && (tag & SMP_EXTENDED) == 0) {
      decode_into_preset_sample(stream, state, layout_of(tag, state), 0, sample);
    } else {
      presetFor_ = 0;
      decode_sample(stream, state, tag, sample);
      presetFor_ = tag;
    }
  }

  How how_;
  UINT16 presetFor_ = 0;
  SampleLayout layout_;
};

template <class T>
bool same_bytes(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;  // a number that is none equals itself here
}

bool is_sample(const Decoder& d) {
  return d.kind == NextRecord::Sample;
}

// The pointer to the text and the text itself apart.
bool same_event(const Decoder& a, const Decoder& b) {
  FEVENT left = a.event, right = b.event;
  const bool texts = left.message != nullptr;
  if (texts != (right.message != nullptr)) return false;
  if (texts && (a.text.len != b.text.len || a.text.text != b.text.text)) return false;
  left.message = right.message = nullptr;
  return same_bytes(left, right);
}

void check_place(const Decoder& a, const Decoder& b) {
  FUZZ_REQUIRE(a.kind == b.kind);
  if (a.kind == NextRecord::End) return;
  FUZZ_REQUIRE(a.tag == b.tag && a.stream.getFilePos() == b.stream.getFilePos());
  FUZZ_REQUIRE(same_bytes(a.state.parameters, b.state.parameters));
  FUZZ_REQUIRE(a.state.sam_per_sec == b.state.sam_per_sec &&
               a.state.curr_time == b.state.curr_time);
}

void check_same(const Decoder& a, const Decoder& b) {
  check_place(a, b);
  if (is_sample(a)) FUZZ_REQUIRE(same_bytes(a.sample, b.sample));
  if (a.kind == NextRecord::Event) FUZZ_REQUIRE(same_event(a, b));
}

void check_glance(const Decoder& decoded, const Decoder& glanced) {
  check_place(decoded, glanced);
  if (!is_sample(decoded)) return;
  const FSAMPLE& s = decoded.sample;
  const SampleGlance& g = glanced.glance;
  FUZZ_REQUIRE(g.time == s.time && g.flags == s.flags);
  FUZZ_REQUIRE(g.input == s.input && g.htype == s.htype);
  bool negative = false;
  for (int eye = 0; eye < 2; ++eye)
    negative |=
        (s.flags & SMP_PUPIL_SIZE) != 0 && (s.flags & (SMP_LEFT >> eye)) != 0 && s.pa[eye] < 0.0f;
  FUZZ_REQUIRE(g.hasNegativePupil == negative);
}

void check_event(const Decoder& d) {
  const FEVENT& e = d.event;
  FUZZ_REQUIRE(e.time == 0 && e.type == ((d.tag >> 8) & 0x3F));
  FUZZ_REQUIRE(e.eye == GZD_LEFT_EYE || e.eye == GZD_RIGHT_EYE);
  if ((e.read & EVT_END_TIME) == 0) FUZZ_REQUIRE(e.entime == e.sttime);
  const float rate = d.state.sam_per_sec;
  if (e.type == GZD_START_SAMPLES || e.type == GZD_START_EVENTS)
    FUZZ_REQUIRE(rate == 250.0f || rate == 500.0f || rate == 1000.0f || rate == 2000.0f);
  if (e.message == nullptr) return;
  FUZZ_REQUIRE(static_cast<const void*>(e.message) == &d.text);
  FUZZ_REQUIRE(d.text.len >= 0 && d.text.len <= message_record_capacity);
  FUZZ_REQUIRE(d.text.text.back() == '\0');
}

void check_translated(const Decoder& plain, Decoder& translated) {
  check_place(plain, translated);
  if (plain.kind != NextRecord::Event) return;
  if (plain.event.type == GZD_MESSAGE && plain.event.message != nullptr) {
    FUZZ_REQUIRE(translated.text.len <= plain.text.len);
    const std::string_view before = text_of(plain.event.message);
    const std::string_view after = text_of(translated.event.message);
    const auto offset = static_cast<INT32>(plain.event.sttime - translated.event.sttime);
    FUZZ_REQUIRE(before.ends_with(after) && offset >= -999 && offset <= 999);
    if (offset == 0) FUZZ_REQUIRE(before == after);
    translated.text = plain.text;
    translated.event.sttime = plain.event.sttime;
    translated.event.entime = plain.event.entime;
  }
  FUZZ_REQUIRE(same_event(plain, translated));
}

StreamState state_from(fuzz::Tail& tail) {
  StreamState state;
  state.revision = static_cast<INT16>(tail.byte() % 5);
  state.ovilo_revision = static_cast<INT16>(1 + tail.byte() % 4);
  state.parameters.gaze_prescale = static_cast<float>(static_cast<INT16>(tail.word()));
  state.parameters.pupil_prescale = static_cast<float>(static_cast<INT16>(tail.word()));
  return state;
}

}  // namespace

FUZZ_TARGET(records) {
  fuzz::Tail tail(input);
  const StreamState state = state_from(tail);
  std::vector<std::unique_ptr<Decoder>> ways;
  for (const How how :
       {How::Afresh, How::Bytewise, How::Preset, How::Glance, How::GlanceBytewise, How::Translated})
    ways.push_back(std::make_unique<Decoder>(tail.rest(), how, state));
  for (int i = 0; i < most_records; ++i) {
    for (const auto& decoder : ways) decoder->next();
    const Decoder& plain = *ways[0];
    for (const int way : {1, 2}) check_same(plain, *ways[static_cast<std::size_t>(way)]);
    for (const int way : {3, 4}) check_glance(plain, *ways[static_cast<std::size_t>(way)]);
    check_translated(plain, *ways[5]);
    if (plain.kind == NextRecord::End) break;
    if (plain.kind == NextRecord::Event) check_event(plain);
  }
}
