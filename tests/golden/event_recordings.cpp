#include <array>
#include <string>

#include "golden_recordings.h"

namespace golden {

using namespace gzdsynth;

namespace {

constexpr int kBothEyes = SMP_LEFT | SMP_RIGHT;

BlockStart eventBlock(std::uint32_t time, unsigned positionType) {
  return {.time = time,
          .rate = 500,
          .eventFlags = kBothEyes | SMP_GAZE | SMP_PUPIL_SIZE,
          .positionType = positionType};
}

EventRecord fixation(std::uint32_t start, std::uint32_t end, int eye, unsigned positionType) {
  EventRecord record(GZD_END_FIXATION, eye, positionType);
  return record.start(start).end(end);
}

EventRecord saccade(std::uint32_t start, std::uint32_t end, int eye, unsigned positionType) {
  EventRecord record(GZD_END_SACCADE, eye, positionType);
  return record.start(start).end(end);
}

void openEvents(GzdWriter& w, std::uint32_t time, unsigned positionType) {
  for (const int eye : {GZD_LEFT_EYE, GZD_RIGHT_EYE})
    w.event(EventRecord(GZD_START_FIXATION, eye, positionType).start(time));
}

void gazeEvents(GzdWriter& w) {
  const unsigned gaze = GZD_POSITION_GAZE;
  openEvents(w, 1000, gaze);
  w.event(fixation(1000, 1198, GZD_LEFT_EYE, gaze)
              .gazeAverage(5123, 3847)
              .pupilAverage(1210)
              .resolutionStart(360, 370)
              .resolutionEnd(380, 390));
  w.event(EventRecord(GZD_START_SACCADE).start(1200));
  w.event(saccade(1200, 1240, GZD_LEFT_EYE, gaze)
              .gazeStart(5123, 3847)
              .gazeEnd(6203, 4957)
              .velocityAverage(1503)
              .velocityPeak(3127)
              .resolutionStart(360, 370)
              .resolutionEnd(360, 370));
  // Without resolution the average velocity gives the amplitude; without both there is none.
  w.event(fixation(1000, 1300, GZD_RIGHT_EYE, gaze).gazeAverage(-123, 20001).pupilAverage(0));
  w.event(saccade(1302, 1342, GZD_RIGHT_EYE, gaze)
              .gazeStart(-123, 20001)
              .gazeEnd(6203, 4957)
              .velocityAverage(1503)
              .velocityPeak(3127));
  w.event(saccade(1400, 1420, GZD_LEFT_EYE, gaze).gazeStart(5123, 3847).gazeEnd(5203, 3957));
  // A saccade into a blink: its end is lost, one of the resolutions as well.
  w.event(EventRecord(GZD_START_SACCADE).start(1990));
  w.event(EventRecord(GZD_START_BLINK).start(2000));
  w.event(EventRecord(GZD_END_BLINK).start(2000).end(2100));
  w.event(saccade(1990, 2110, GZD_LEFT_EYE, gaze)
              .gazeStart(5123, 3847)
              .gazeEnd(kStoredMissing, kStoredMissing)
              .velocityPeak(kStoredMissing)
              .resolutionStart(360, 370)
              .resolutionEnd(kStoredMissing, kStoredMissing));
}

void hrefEvents(GzdWriter& w) {
  const unsigned href = GZD_POSITION_HREF;
  openEvents(w, 3000, href);
  w.event(fixation(3000, 3198, GZD_LEFT_EYE, href)
              .hrefAverage(1500, -2250)
              .gazeAverage(5123, 3847)
              .pupilAverage(1210));
  w.event(fixation(3000, 3198, GZD_RIGHT_EYE, href)
              .hrefAverage(1500, -2250)
              .gazeAverage(5123, 3847)
              .pupilAverage(1210)
              .resolutionStart(360, 370)
              .resolutionEnd(380, 390));
  w.event(EventRecord(GZD_START_SACCADE, GZD_LEFT_EYE, href).start(3200));
  w.event(saccade(3200, 3240, GZD_LEFT_EYE, href)
              .hrefStart(0, 0)
              .hrefEnd(15000, 0)
              .gazeStart(5123, 3847)
              .gazeEnd(6203, 4957)
              .velocityAverage(1503)
              .velocityPeak(3127));
  w.event(saccade(3200, 3242, GZD_RIGHT_EYE, href).hrefStart(100, 200).hrefEnd(kStoredMissing, 0));
}

void rawEvents(GzdWriter& w) {
  const unsigned raw = GZD_POSITION_PUPIL;
  openEvents(w, 5000, raw);
  w.event(fixation(5000, 5198, GZD_LEFT_EYE, raw).rawAverage(-1801, 902).pupilAverage(1210));
  w.event(EventRecord(GZD_START_SACCADE, GZD_LEFT_EYE, raw).start(5200));
  w.event(saccade(5200, 5240, GZD_LEFT_EYE, raw)
              .rawStart(-1801, 902)
              .rawEnd(-1202, 1103)
              .velocityAverage(15)
              .velocityPeak(31));
  w.event(EventRecord(GZD_BREAK_PARSE, GZD_LEFT_EYE, raw).start(5300));
  // Ends before their starts.
  w.event(fixation(5500, 5400, GZD_RIGHT_EYE, raw).rawAverage(1, 2).pupilAverage(3));
  w.event(saccade(5600, 5500, GZD_RIGHT_EYE, raw).rawStart(1, 2).rawEnd(3, 4));
}

}  // namespace

GzdWriter eventKinds() {
  GzdWriter w(2);
  w.startEvents(eventBlock(1000, GZD_POSITION_GAZE));
  gazeEvents(w);
  w.endEvents(2500).startEvents(eventBlock(3000, GZD_POSITION_HREF));
  hrefEvents(w);
  w.endEvents(4000).startEvents(eventBlock(5000, GZD_POSITION_PUPIL));
  rawEvents(w);
  w.endEvents(6000);
  return w;
}

GzdWriter blinkRepairs() {
  GzdWriter w(2);
  const auto start = [&w](unsigned type, std::uint32_t time) {
    w.event(EventRecord(type).start(time));
  };
  const auto end = [&w](unsigned type, std::uint32_t from, std::uint32_t to) {
    w.event(EventRecord(type).start(from).end(to));
  };
  const auto block = [&w](std::uint32_t time) {
    w.startEvents(eventBlock(time, GZD_POSITION_GAZE));
  };
  block(1000);  // an end without a start, before a whole blink
  end(GZD_END_BLINK, 950, 1100);
  start(GZD_START_BLINK, 1500);
  end(GZD_END_BLINK, 1500, 1600);
  w.endEvents(2000);
  block(4000);  // two starts for one end
  start(GZD_START_BLINK, 4100);
  start(GZD_START_BLINK, 4300);
  end(GZD_END_BLINK, 4300, 4400);
  w.endEvents(5000);
  block(7000);  // two blinks in one saccade
  start(GZD_START_SACCADE, 7100);
  start(GZD_START_BLINK, 7120);
  end(GZD_END_BLINK, 7120, 7160);
  start(GZD_START_BLINK, 7180);
  end(GZD_END_BLINK, 7180, 7250);
  end(GZD_END_SACCADE, 7100, 7300);
  w.endEvents(8000);
  block(10000);  // events that spill over the end, and one that starts between two blocks
  start(GZD_START_FIXATION, 10900);
  w.endEvents(11000);
  end(GZD_END_FIXATION, 10900, 11100);
  start(GZD_START_SACCADE, 11200);
  block(13000);
  end(GZD_END_SACCADE, 11200, 13100);
  start(GZD_START_FIXATION, 13300);  // a fixation that starts behind its end
  end(GZD_END_FIXATION, 13200, 13250);
  w.endEvents(14000);
  return w;
}

GzdWriter blockRepairs() {
  GzdWriter w(2);
  const auto events = [&w](std::uint32_t time) {
    w.startEvents(eventBlock(time, GZD_POSITION_GAZE));
  };
  events(1000);  // the end of a blink that began in no block, and a start in the next one
  w.event(EventRecord(GZD_END_BLINK).start(1080).end(1100)).endEvents(1500);
  events(2600);
  w.event(EventRecord(GZD_START_BLINK).start(2700));
  w.event(EventRecord(GZD_END_BLINK).start(2700).end(2750)).endEvents(3000);
  events(5000);  // the next block's configuration falls into this one, which ends 2 ms before it
  w.message(5900, "in the block").message(5998, "RECCFG 1000 FILTER 2").message(5999, "with it");
  w.endEvents(6000);
  events(6002);
  w.message(6100, "in the next block").endEvents(7100);
  return w;
}

GzdWriter messages() {
  GzdWriter w(2);
  w.message(100, "before the first block").startBlock({.time = 1000, .rate = 500});
  w.message(1010, "12 an offset").message(1020, "-12 a negative offset");
  w.message(1030, "1500 too large an offset").message(1040, "   7 blanks before an offset");
  w.message(1050, "8").message(1060, "9x no blank behind");
  w.message(1100, "!V TRIAL_VAR a 1").message(1110, "  -20   !V TRIAL_VAR b 2");
  w.message(1120, "!EGAZE").message(1130, " 5 !EG").message(1140, "text !V inside");
  w.message(1200, "!GEOM screen").message(1210, "3 !GEOM screen").message(1220, "!GEOM");
  w.message(1230, "!MIPI data").message(1240, "!IMU 1").message(1250, "!IMU");
  w.message(1300, "").message(1310, std::string("cut\0off", 7)).message(1320, "a\ttab");
  w.event(EventRecord(GZD_MESSAGE, GZD_LEFT_EYE, 0).start(1330));
  w.message(1340, "percent %d %s %n").message(1350, "caf\xC3\xA9 and \xE9");
  w.longMessage(1400, 1, "first " + std::string(900, 'a') + " last");
  w.longMessage(1410, 2, "a long message that fits");
  w.message(1420, std::string(498, 'x')).message(1500, "TRIAL end");
  w.endBlock(2000).message(2100, "behind the last block");
  return w;
}

GzdWriter buttonsAndInput() {
  GzdWriter w(2);
  const unsigned flags = SMP_LEFT | SMP_TIME_ABSOLUTE | SMP_GAZE | SMP_PUPIL_SIZE | SMP_STATUS |
                         SMP_INPUT | SMP_BUTTONS;
  const BlockStart block{.time = 1000,
                         .rate = 500,
                         .sampleFlags = static_cast<int>(flags & ~unsigned{SMP_TIME_ABSOLUTE})};
  SampleRecord s{.flags = flags};
  s.gx = {5123, 0};
  s.gy = {3847, 0};
  s.pa = {900, 0};
  w.startBlock(block);
  const int inputs[] = {0, 127, 255, 32767, -1, kStoredMissing};
  for (unsigned i = 0; i < 6; ++i) {
    s.time = 1000 + 2 * i;
    s.input = inputs[i];
    s.buttons = static_cast<int>(i);
    w.sample(s).input(s.time, inputs[i]);
  }
  for (const int buttons : {0x0101, 0x0100, 0x0501, 0x00FF, 0xFF55, 0x8080})
    w.button(1012, buttons);
  w.endBlock(1014);
  return w;
}

GzdWriter poseEvents() {
  GzdWriter w(4);
  w.magic(Magic::kOsp).startEvents({.time = 1000, .rate = 1000});
  std::array<float, 36> values;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i) + 0.0625F;
  values[5] = MISSING_DATA;
  values[6] = NOT_RECORDED;
  w.event(EventRecord(GZD_START_FIXATION).start(1000).headPose(values));
  w.event(EventRecord(GZD_END_FIXATION).start(1000).end(1100).headPose(values).pupilAverage(900));
  w.event(EventRecord(GZD_START_SACCADE).start(1101).headPose(values));
  w.event(EventRecord(GZD_END_SACCADE).start(1101).end(1140).headPose(values).velocityPeak(3127));
  w.event(EventRecord(GZD_START_BLINK).start(1110).headPose(values));
  w.event(EventRecord(GZD_END_BLINK).start(1110).end(1130).headPose(values));
  w.endEvents(1200);
  return w;
}

}  // namespace golden
