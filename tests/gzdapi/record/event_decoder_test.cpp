#include "record/event_decoder.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/memory_stream.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::Bytes;
using gzdsynth::EventRecord;
using gzdsynth::kStoredMissing;

// One decoding, with all that it changes.
struct Decoded {
  int result = 99;
  FEVENT e{};
  StreamState state;
  MessageText text;
  INT64 end = 0;

  [[nodiscard]] std::string message() const {
    return e.message != nullptr ? std::string(text_of(e.message)) : "(none)";
  }
};

StreamState kestrel() {
  StreamState state;
  state.revision = 1;
  state.parameters = {
      .gaze_prescale = 10, .velocity_prescale = 4, .pupil_prescale = 3, .head_prescale = 2};
  return state;
}

void decode_into(Decoded& d, const EventRecord& record) {
  const Bytes bytes = record.bytes();
  MemoryStream in(bytes);
  const UINT16 tag = static_cast<UINT16>(in.getWord());
  d.result = decode_event(in, d.state, tag, d.text, d.e);
  d.end = in.getFilePos();
  if (d.result == 0) {
    EXPECT_EQ(d.end, static_cast<INT64>(bytes.size()));
  }
}

#define DECODE(name, record, startState) \
  Decoded name;                          \
  (name).state = startState;             \
  decode_into(name, record)

TEST(EventTag, TypeEyeAndParser) {
  DECODE(left, EventRecord(8, GZD_LEFT_EYE, 128), kestrel());
  EXPECT_EQ(left.e.type, 8);
  EXPECT_EQ(left.e.eye, GZD_LEFT_EYE);
  EXPECT_EQ(left.e.parsedby, 128);
  DECODE(right, EventRecord(2, GZD_RIGHT_EYE), kestrel());
  EXPECT_EQ(right.e.eye, GZD_RIGHT_EYE);
  // Only the value 01 of the two eye bits is the right eye.
  for (const int bits : {0x80, 0xC0}) {
    MemoryStream in({0});
    Decoded d;
    ASSERT_EQ(decode_event(in, d.state, static_cast<UINT16>((bits | 63) << 8 | 0xFE), d.text, d.e),
              0);
    EXPECT_EQ(d.e.eye, GZD_LEFT_EYE);
    EXPECT_EQ(d.e.type, 63);
    EXPECT_EQ(d.e.parsedby, 0xFE);
  }
}

TEST(EventTimes, MissingOnesAreTakenFromTheOther) {
  DECODE(both, EventRecord(2).start(5000).end(5100), kestrel());
  EXPECT_EQ(both.e.sttime, 5000u);
  EXPECT_EQ(both.e.entime, 5100u);
  EXPECT_EQ(both.e.read, 0x0041);
  DECODE(endOnly, EventRecord(8).end(800), kestrel());
  EXPECT_EQ(endOnly.e.sttime, 800u);
  EXPECT_EQ(endOnly.e.entime, 800u);
  DECODE(startOnly, EventRecord(7).start(900), kestrel());
  EXPECT_EQ(startOnly.e.entime, 900u);
  DECODE(none, EventRecord(7), kestrel());
  EXPECT_EQ(none.e.sttime, 0u);
  EXPECT_EQ(none.e.entime, 0u);
}

TEST(EventFields, PairsOfWords) {
  struct Case {
    unsigned code;
    float FEVENT::*x;
    float FEVENT::*y;
    float divisor;
    bool mapsMissing;
    int read;
  };
  const Case cases[] = {
      {41, &FEVENT::hstx, &FEVENT::hsty, 1, true, 0x0808},
      {42, &FEVENT::gstx, &FEVENT::gsty, 10, true, 0x1008},
      {43, &FEVENT::supd_x, &FEVENT::supd_y, 10, true, 0x0201},
      {73, &FEVENT::henx, &FEVENT::heny, 1, true, 0x0810},
      {74, &FEVENT::genx, &FEVENT::geny, 10, true, 0x1010},
      {75, &FEVENT::eupd_x, &FEVENT::eupd_y, 10, true, 0x0202},
      {105, &FEVENT::havx, &FEVENT::havy, 1, true, 0x0820},
      {106, &FEVENT::gavx, &FEVENT::gavy, 10, true, 0x1020},
  };
  for (const Case& c : cases) {
    DECODE(d, EventRecord(8).pair(c.code, 150, kStoredMissing), kestrel());
    FEVENT expected{};
    expected.type = 8;
    expected.parsedby = 192;
    expected.read = static_cast<UINT16>(c.read);
    expected.*c.x = 150.0f / c.divisor;
    expected.*c.y = 1e8f;
    EXPECT_EQ(std::memcmp(&d.e, &expected, sizeof expected), 0) << c.code;
  }
}

TEST(EventFields, RawPairsCrossOver) {
  DECODE(start, EventRecord(8).pair(40, 150, kStoredMissing), kestrel());
  EXPECT_EQ(start.e.gstx, 150.0f);
  EXPECT_EQ(start.e.hstx, -32768.0f);
  EXPECT_EQ(start.e.gsty, -32768.0f);
  EXPECT_EQ(start.e.hsty, 0.0f);
  EXPECT_EQ(start.e.read, 0x0408);
  DECODE(end, EventRecord(8).pair(72, 1, 2), kestrel());
  EXPECT_EQ(end.e.genx, 1.0f);
  EXPECT_EQ(end.e.henx, 2.0f);
  EXPECT_EQ(end.e.geny, 2.0f);
  EXPECT_EQ(end.e.heny, 0.0f);
  EXPECT_EQ(end.e.read, 0x0410);
  DECODE(average, EventRecord(8).pair(104, 3, 4), kestrel());
  EXPECT_EQ(average.e.gavx, 3.0f);
  EXPECT_EQ(average.e.havx, 3.0f);
  EXPECT_EQ(average.e.hstx, 4.0f);
  EXPECT_EQ(average.e.gavy, 4.0f);
  EXPECT_EQ(average.e.havy, 0.0f);
  EXPECT_EQ(average.e.read, 0x0420);
}

TEST(EventFields, SingleWords) {
  struct Case {
    unsigned code;
    float FEVENT::*field;
    float divisor;
    float missing;
    int read;
  };
  const Case cases[] = {
      {48, &FEVENT::sta, 1, -32768.0f, 0x0081},  {51, &FEVENT::svel, 4, 1e8f, 0x0101},
      {81, &FEVENT::ena, 1, -32768.0f, 0x0082},  {83, &FEVENT::evel, 4, 1e8f, 0x0102},
      {114, &FEVENT::ava, 1, -32768.0f, 0x0084}, {115, &FEVENT::avel, 4, 1e8f, 0x0104},
      {147, &FEVENT::pvel, 4, 1e8f, 0x0104},
  };
  for (const Case& c : cases) {
    for (const int stored : {150, kStoredMissing}) {
      DECODE(d, EventRecord(8).word(c.code, stored), kestrel());
      FEVENT expected{};
      expected.type = 8;
      expected.parsedby = 192;
      expected.read = static_cast<UINT16>(c.read);
      expected.*c.field = stored == kStoredMissing ? c.missing : 150.0f / c.divisor;
      EXPECT_EQ(std::memcmp(&d.e, &expected, sizeof expected), 0) << c.code << ' ' << stored;
    }
  }
}

TEST(EventFields, WordsWithoutScale) {
  DECODE(d, EventRecord(25).input(0xFFFE).buttons(0x0102).flags(0x8001), kestrel());
  EXPECT_EQ(d.e.input, 0xFFFE);
  EXPECT_EQ(d.e.buttons, 0x0102);
  EXPECT_EQ(d.e.flags, 0x8001);
  EXPECT_EQ(d.e.read, 0x2000);
  EXPECT_EQ(d.state.parameters, kestrel().parameters);
}

TEST(EventFields, PrescalesUpToATenthDoNotScale) {
  StreamState state = kestrel();
  state.parameters.gaze_prescale = 0.1f - 0.01f;
  state.parameters.velocity_prescale = 0;
  DECODE(d, EventRecord(8).gazeStart(150, 7).velocityAverage(9), state);
  EXPECT_EQ(d.e.gstx, 150.0f);
  EXPECT_EQ(d.e.avel, 9.0f);
}

TEST(EventFields, UnknownCodesAreNamedAndSkippedAsOneByte) {
  Decoded d;
  d.state = kestrel();
  const std::string out = standard_output_of([&] {
    decode_into(d, EventRecord(7).raw({1, 255, 34}).start(500));
  });
  EXPECT_EQ(out,
            "ERROR: Do not know how to handle 1\nERROR: Do not know how to handle 255\n"
            "ERROR: Do not know how to handle 34\n");
  EXPECT_EQ(d.e.sttime, 500u);
}

TEST(EventFields, ARecordCutAnywhereThrows) {
  std::array<float, 36> pose{};
  const Bytes bytes = EventRecord(8)
                          .start(1)
                          .end(2)
                          .rawStart(1, 2)
                          .gazeAverage(1, 2)
                          .velocityPeak(3)
                          .headPose(pose)
                          .text("text")
                          .flags(1)
                          .bytes();
  for (std::size_t cut = 2; cut < bytes.size(); ++cut) {
    CapturedLog log;
    MemoryStream in(bytes, cut);
    Decoded d;
    EXPECT_THROW(decode_event(in, d.state, static_cast<UINT16>(in.getWord()), d.text, d.e),
                 GZDException)
        << cut;
    EXPECT_TRUE(log.take().starts_with("error reading gzd file "));
  }
}

// ---- messages
// ------------------------------------------------------------------------------------

TEST(EventMessage, TextsUpToOneRecord) {
  for (const std::size_t length : {0u, 1u, 5u, 497u, 498u}) {
    const std::string text(length, 'm');
    DECODE(d, EventRecord(24).start(1).text(text), kestrel());
    ASSERT_EQ(d.result, 0);
    EXPECT_EQ(d.message(), text);
    EXPECT_EQ(d.e.message->len, static_cast<INT16>(length));
    EXPECT_EQ(d.e.read & EVT_HEAD_POSE, 0);
  }
}

TEST(EventMessage, LengthsThatNoRecordHasAreRefused) {
  for (const int length : {499, 32767, -1, -32768}) {
    DECODE(d, EventRecord(24).start(1).text("x", length), kestrel());
    EXPECT_EQ(d.result, -1) << length;
  }
}

TEST(EventMessage, AShorterTextLeavesNothingOfTheOneBefore) {
  Decoded d;
  decode_into(d, EventRecord(24).start(1).text("a long message"));
  decode_into(d, EventRecord(24).start(1).text("ab"));
  EXPECT_EQ(d.message(), "ab");
  EXPECT_EQ(d.text.text[5], '\0');
}

TEST(EventMessage, BinaryPayloadsAreNoText) {
  DECODE(d, EventRecord(24).start(1).text(std::string("\0abc", 4)), kestrel());
  EXPECT_EQ(d.e.message, nullptr);
  EXPECT_EQ(d.e.read, 1);
  DECODE(nul, EventRecord(24).start(1).text(std::string("\0", 1)), kestrel());
  EXPECT_NE(nul.e.message, nullptr);
  EXPECT_EQ(nul.e.message->len, 1);
}

TEST(EventMessage, HeadPoseFillsTheEvent) {
  std::array<float, 36> pose;
  for (std::size_t i = 0; i < 36; ++i) pose[i] = static_cast<float>(i) + 0.5f;
  pose[3] = -32768.0f;
  DECODE(d, EventRecord(8).headPose(pose), kestrel());
  EXPECT_EQ(d.e.message, nullptr);
  EXPECT_EQ(d.e.read, 0x4000);
  EXPECT_EQ(d.e.headInSpaceX_start, 0.5f);
  EXPECT_EQ(d.e.headInSpaceX_end, 1.5f);
  EXPECT_EQ(d.e.headInSpaceX_avg, 2.5f);
  EXPECT_EQ(d.e.headInSpaceY_start, -32768.0f);  // as it stands
  EXPECT_EQ(d.e.eyeInHeadX_start, 6.5f);
  EXPECT_EQ(d.e.eyeInHeadY_avg, 11.5f);
  EXPECT_EQ(d.e.headRotationX_start, 12.5f);
  EXPECT_EQ(d.e.headRotationY_start, 15.5f);
  EXPECT_EQ(d.e.headRotationZ_avg, 20.5f);
  EXPECT_EQ(d.e.headPositionX_start, 21.5f);
  EXPECT_EQ(d.e.headPositionZ_avg, 29.5f);
  EXPECT_EQ(d.e.genx, 30.5f);
  EXPECT_EQ(d.e.gstx, 31.5f);
  EXPECT_EQ(d.e.gavx, 32.5f);
  EXPECT_EQ(d.e.geny, 33.5f);
  EXPECT_EQ(d.e.gsty, 34.5f);
  EXPECT_EQ(d.e.gavy, 35.5f);
}

TEST(EventMessage, HeadPoseHasOneFormOnly) {
  for (const auto& [length, size, kind] :
       {std::tuple{146u, 146, 2}, {147u, 145, 2}, {147u, 146, 1}}) {
    std::string payload(length, 'x');
    payload[0] = '\0';
    payload[1] = static_cast<char>(size);
    payload[2] = static_cast<char>(kind);
    DECODE(d, EventRecord(8).text(payload), kestrel());
    EXPECT_EQ(d.e.message, nullptr);
    EXPECT_EQ(d.e.read, 0) << length << ' ' << size << ' ' << kind;
  }
}

TEST(EventMessage, Offsets) {
  struct Case {
    const char* text;
    UINT32 time;  // of 3000
    const char* expected;
    int length;
  };
  const Case cases[] = {
      {"12 hello", 2988, " hello", 6},
      {"-12 hello", 3012, " hello", 6},
      {"1500 hello", 3000, "1500 hello", 10},
      {"-999 hello", 3999, " hello", 6},
      {"999 hello", 2001, " hello", 6},
      {"1000 hello", 3000, "1000 hello", 10},
      {"0 hello", 3000, "0 hello", 7},
      {"hello 12", 3000, "hello 12", 8},
      {"  12 hello", 2988, " hello", 8},   // the blanks before stay in the length
      {"12hello more", 2988, " more", 5},  // up to seven characters go as the number
      {"12abcdefgh", 2988, "fgh", 3},
      {"12", 3000, "12", 2},  // nothing would be left
      {"12 ", 3000, "12 ", 3},
      {"12 x", 2988, " x", 2},
      {"+5 x", 2995, " x", 2},
      {"                     7 x", 3000, "                     7 x", 24},  // 21 blanks
      {"                    7 x", 2993, " x", 22},                         // 20 blanks
  };
  for (const Case& c : cases) {
    Decoded d;
    d.state.enableMsgTimestampOffsetTranslation = true;
    decode_into(d, EventRecord(24).start(3000).text(c.text));
    EXPECT_EQ(d.e.sttime, c.time) << c.text;
    EXPECT_EQ(d.message(), c.expected) << c.text;
    EXPECT_EQ(d.e.message->len, c.length) << c.text;
  }
  DECODE(off, EventRecord(24).start(3000).text("12 hello"), StreamState());
  EXPECT_EQ(off.e.sttime, 3000u);
  Decoded button;
  button.state.enableMsgTimestampOffsetTranslation = true;
  decode_into(button, EventRecord(25).start(3000).text("12 hello"));
  EXPECT_EQ(button.e.sttime, 3000u);
}

// ---- blocks
// --------------------------------------------------------------------------------------

EventRecord block_start(unsigned type, double rate) {
  EventRecord record(type);
  record.start(70).flags(0x8400).input(0xC000);
  if (rate > 0) record.end(static_cast<std::uint32_t>(rate * 65536.0));
  return record.pupilStart(10).pupilEnd(20).pupilAverage(3).resolutionEnd(0x0921, 1);
}

TEST(BlockStart, SamplesSetScalingRateAndSettings) {
  DECODE(d, block_start(15, 500).buttons(5).velocityPeak(6), kestrel());
  const DecodingParameters expected{10, 20, 5, 6};
  EXPECT_EQ(d.state.parameters, expected);
  EXPECT_EQ(d.state.sam_data, 0x8400);
  EXPECT_EQ(d.state.sample_divisor, 3);
  EXPECT_EQ(d.state.sam_per_sec, 500.0f);
  EXPECT_EQ(d.e.avel, 500.0f);
  EXPECT_EQ(d.e.entime, 70u);
  EXPECT_EQ(d.e.eupd_x, 0x0921);
  EXPECT_EQ(d.e.eupd_y, 1.0f);
  EXPECT_EQ(d.e.buttons, 5);
  EXPECT_EQ(d.state.lfilter, 1);
  EXPECT_EQ(d.state.ffilter, 2);
  EXPECT_EQ(d.state.crmode, 9);
}

TEST(BlockStart, EventsDoTheSameButKeepTheRateAsEnd) {
  DECODE(d, block_start(17, 1000), kestrel());
  EXPECT_EQ(d.state.evt_flags, 0xC000);
  EXPECT_EQ(d.state.evt_data, 0x8400);
  EXPECT_EQ(d.state.sam_per_sec, 1000.0f);
  EXPECT_EQ(d.e.entime, 65'536'000u);
  EXPECT_EQ(d.state.sam_data, 0);
  EXPECT_EQ(d.state.sample_divisor, 1);
  const DecodingParameters defaults{10, 20, 1, 1};
  EXPECT_EQ(d.state.parameters, defaults);
  EXPECT_EQ(d.e.buttons, 1);
  EXPECT_EQ(d.e.pvel, 1.0f);
}

TEST(BlockStart, ADivisorOfZeroIsOne) {
  DECODE(d, EventRecord(15).start(1).pupilAverage(0), kestrel());
  EXPECT_EQ(d.state.sample_divisor, 1);
}

TEST(BlockStart, Rates) {
  struct Case {
    double stored;
    float before, after;
    const char* log;
  };
  const Case cases[] = {
      {250, 1000, 250, ""},
      {500, 250, 500, ""},
      {2000, 250, 2000, ""},
      {300, 1000, 250, ""},
      {500.5, 1000, 250, ""},
      {0, 250, 250, ""},
      {0, 500, 500, ""},
      {0, 1000, 250, "Possible miss handle! sample per second is 1000.000000 resetting to 250 \n"},
  };
  for (const Case& c : cases) {
    for (const unsigned type : {15u, 17u}) {
      CapturedLog log;
      StreamState state = kestrel();
      state.sam_per_sec = c.before;
      DECODE(d, block_start(type, c.stored), state);
      EXPECT_EQ(d.state.sam_per_sec, c.after) << c.stored;
      EXPECT_EQ(log.take(), c.log);
    }
  }
}

TEST(BlockStart, FilesWithoutARevisionAre250) {
  StreamState state = kestrel();
  state.revision = 0;
  DECODE(d, block_start(15, 1000), state);
  EXPECT_EQ(d.state.sam_per_sec, 250.0f);
  EXPECT_EQ(d.e.avel, 250.0f);
  EXPECT_EQ(d.state.ffilter, 1);
  EXPECT_EQ(d.state.lfilter, 1);
  EXPECT_EQ(d.state.crmode, 9);
}

TEST(BlockEnd, ClearsTheFlagsOfItsKind) {
  StreamState state = kestrel();
  state.sam_data = 5;
  state.evt_flags = 6;
  DECODE(samples, EventRecord(16).end(100), state);
  EXPECT_EQ(samples.state.sam_data, 0);
  EXPECT_EQ(samples.state.evt_flags, 6);
  DECODE(events, EventRecord(18).end(100), state);
  EXPECT_EQ(events.state.sam_data, 5);
  EXPECT_EQ(events.state.evt_flags, 0);
}

TEST(EData, UnknownTypesAreReported) {
  CapturedLog log;
  EData e;
  for (int type = 0; type < 64; ++type) {
    e.type = static_cast<INT16>(type);
    e.process_event();
    const bool known = (type >= 1 && type <= 10) || (type >= 15 && type <= 18) || type == 24 ||
                       type == 25 || type == 28;
    EXPECT_EQ(
        log.take(),
        known ? "" : ">>>>> FILE STRUCTURE ERROR: UNKNOWN EVENT (" + std::to_string(type) + ")\n");
  }
}

}  // namespace
