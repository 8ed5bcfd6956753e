// A run of sample records from any bytes.
//
// Asserts: the same records come out of a stream that shows everything at once and of one that
// shows a byte at a time, with the same position behind each and the same end; the scan's glance at
// a record moves as far as decoding it and sees the same time, words and negative pupil sizes; a
// record decoded into one preset for its tag equals one decoded afresh; an expected time is the
// sample's time unless the record has its own.
#include "record/sample_decoder.h"

#include <optional>

#include "byte_stream.h"
#include "fuzz_support.h"
#include "record/record_stream.h"
#include "record/sample_decoder.h"

using namespace gzd;

namespace {

constexpr int MOST_RECORDS = 512;

using fuzz::Digest;
using fuzz::Window;

// All fields, the padding left out.
std::uint64_t digest_of(const FSAMPLE& s) {
  constexpr std::size_t behind_words = offsetof(FSAMPLE, errors) + sizeof s.errors;
  constexpr std::size_t behind_padding = offsetof(FSAMPLE, eyeInHeadX);
  const char* const bytes = reinterpret_cast<const char*>(&s);
  return Digest()
      .addBytes(bytes, behind_words)
      .addBytes(bytes + behind_padding, sizeof s - behind_padding)
      .value();
}

// What became of one record.
struct Outcome {
  bool ended = false;  // by an exception, or a tag that is no sample's
  UINT16 tag = 0;
  FSAMPLE sample{};
  SampleGlance glance;
};

class Decoder {
 public:
  Decoder(fuzz::Input bytes, Window window, const StreamState& start)
      : stream(bytes, window), state(start) {}

  template <class Read>
  Outcome next(Read read) {
    Outcome outcome;
    try {
      outcome.ended = next_combfile_item(stream, state) != NextRecord::Sample;
      outcome.tag = state.last_tag;
      if (!outcome.ended) read(outcome);
    } catch (const GZDException&) {
      outcome.ended = true;
    }
    return outcome;
  }

  Outcome decode(UINT32 expectedTime, bool reuse) {
    return next([&](Outcome& outcome) {
      if (reuse && kept && presetFor == outcome.tag && (outcome.tag & SMP_EXTENDED) == 0) {
        decode_into_preset_sample(stream, state, layout_of(outcome.tag, state), expectedTime,
                                  *kept);
      } else {
        if (!kept) kept.emplace();
        presetFor = 0;
        decode_sample(stream, state, outcome.tag, expectedTime, *kept);
        presetFor = outcome.tag;
      }
      outcome.sample = *kept;
    });
  }
  Outcome glance() {
    return next([&](Outcome& outcome) {
      outcome.glance = glance_at_sample(stream, state, outcome.tag, layout);
    });
  }

  fuzz::ByteStream stream;
  StreamState state;

 private:
  std::optional<FSAMPLE> kept;
  UINT16 presetFor = 0;
  SampleLayout layout;
};

StreamState state_from(fuzz::Tail& tail) {
  StreamState state;
  state.ovilo_revision = static_cast<INT16>(1 + tail.byte() % 4);
  state.parameters.gaze_prescale = static_cast<float>(static_cast<INT16>(tail.word()));
  state.parameters.pupil_prescale = static_cast<float>(static_cast<INT16>(tail.word()));
  state.curr_time = tail.integer();
  return state;
}

void check_same(const Outcome& a, const Outcome& b) {
  FUZZ_REQUIRE(a.ended == b.ended && a.tag == b.tag);
  if (!a.ended) FUZZ_REQUIRE(digest_of(a.sample) == digest_of(b.sample));
}

void check_glance(const Outcome& whole, const Outcome& glanced) {
  FUZZ_REQUIRE(whole.ended == glanced.ended);
  if (whole.ended) return;
  const FSAMPLE& s = whole.sample;
  const SampleGlance& g = glanced.glance;
  FUZZ_REQUIRE(g.time == s.time && g.flags == s.flags);
  FUZZ_REQUIRE(g.input == s.input && g.htype == s.htype);
  bool negative = false;
  for (int eye = 0; eye < 2; ++eye)
    negative |=
        (s.flags & SMP_PUPIL_SIZE) != 0 && (s.flags & (SMP_LEFT >> eye)) != 0 && s.pa[eye] < 0.0f;
  FUZZ_REQUIRE(g.hasNegativePupil == negative);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Tail tail({data, size});
  const StreamState state = state_from(tail);
  const UINT32 expected = tail.byte() % 2 != 0 ? tail.integer() : 0;
  const fuzz::Input records = tail.rest();
  Decoder whole(records, Window::Whole, state), bytewise(records, Window::Narrow, state);
  Decoder reusing(records, Window::Whole, state), glancing(records, Window::Whole, state),
      glancingBytewise(records, Window::Narrow, state);
  for (int i = 0; i < MOST_RECORDS; ++i) {
    const Outcome outcome = whole.decode(expected, false);
    check_same(outcome, bytewise.decode(expected, false));
    check_same(outcome, reusing.decode(expected, true));
    if (expected == 0) {
      check_glance(outcome, glancing.glance());
      check_glance(outcome, glancingBytewise.glance());
    }
    if (outcome.ended) break;
    const bool ownTime = (outcome.tag & SMP_TIME_ABSOLUTE) != 0;
    if (expected != 0 && !ownTime) FUZZ_REQUIRE(outcome.sample.time == expected);
    const INT64 position = whole.stream.getFilePos();
    FUZZ_REQUIRE(bytewise.stream.getFilePos() == position);
    FUZZ_REQUIRE(reusing.stream.getFilePos() == position);
    if (expected == 0) {
      FUZZ_REQUIRE(glancing.stream.getFilePos() == position);
      FUZZ_REQUIRE(glancingBytewise.stream.getFilePos() == position);
      FUZZ_REQUIRE(glancing.state.curr_time == whole.state.curr_time);
    }
  }
  return 0;
}
