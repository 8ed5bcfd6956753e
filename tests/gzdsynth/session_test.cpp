// Sessions, taken apart again record by record.
#include "session.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "companions.h"
#include "record_walker.h"
#include "support/hex_bytes.h"

namespace gzdsynth {
namespace {

struct Made {
  std::vector<TrialSpan> trials;
  Bytes body;
  std::vector<WalkedRecord> records;
};

Made make(const SessionSettings& settings) {
  GzdWriter writer = sessionWriter(settings);
  Made made;
  made.trials = Session(settings, writer).run();
  made.body = bodyOf(writer.compressed(false));
  made.records = walkRecords(made.body);
  return made;
}

std::vector<const WalkedRecord*> eventsOf(const Made& made, unsigned type) {
  std::vector<const WalkedRecord*> found;
  for (const WalkedRecord& record : made.records)
    if (!record.isSample && record.type == type) found.push_back(&record);
  return found;
}

std::vector<const SampleRecord*> samplesOf(const Made& made) {
  std::vector<const SampleRecord*> found;
  for (const WalkedRecord& record : made.records)
    if (record.isSample) found.push_back(&record.sample);
  return found;
}

std::vector<const SampleRecord*> samplesWithin(const Made& made, const WalkedRecord& event) {
  std::vector<const SampleRecord*> found;
  for (const SampleRecord* sample : samplesOf(made))
    if (sample->time >= event.value(33) && sample->time <= event.value(65)) found.push_back(sample);
  return found;
}

const SampleRecord& sampleAt(const Made& made, std::int64_t time) {
  for (const SampleRecord* sample : samplesOf(made))
    if (sample->time == time) return *sample;
  throw std::out_of_range("no sample at that time");
}

int repeatedTimes(const Made& made) {
  int count = 0;
  const auto samples = samplesOf(made);
  for (std::size_t i = 1; i < samples.size(); ++i)
    count += samples[i]->time == samples[i - 1]->time ? 1 : 0;
  return count;
}

bool hasText(const Made& made, const std::string& text) {
  for (const WalkedRecord* message : eventsOf(made, GZD_MESSAGE))
    if (message->text == text) return true;
  return false;
}

TEST(Session, TrialsHoldTheAskedSamplesAtTheRate) {
  for (const int rate : {250, 500, 1000, 2000}) {
    const Made made = make({.rate = rate, .seconds = 3, .trials = 4});
    ASSERT_EQ(made.trials.size(), 4U);
    const auto samples = samplesOf(made);
    EXPECT_EQ(samples.size(), static_cast<std::size_t>(3 * rate));
    // Half-milliseconds, the odd ones of which are told by a flag.
    const auto halves = [](const SampleRecord& s) {
      return 2 * s.time + ((s.flags & SMP_HALF_MS) != 0 ? 1 : 0);
    };
    int jumps = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
      jumps += halves(*samples[i]) - halves(*samples[i - 1]) != 2000U / rate ? 1 : 0;
    EXPECT_EQ(jumps, 3);
    EXPECT_EQ(samples.front()->time, made.trials.front().start);
    EXPECT_EQ(made.trials.back().end, (halves(*samples.back()) + 1) / 2);
    EXPECT_EQ(eventsOf(made, GZD_START_SAMPLES).size(), 4U);
    EXPECT_EQ(eventsOf(made, GZD_END_EVENTS).size(), 4U);
    EXPECT_EQ(eventsOf(made, GZD_START_SAMPLES)[0]->value(65), rate * 65536LL);
  }
}

// Also those that a trial's end cuts short, whatever the eyes do at that moment.
TEST(Session, EveryEventEnds) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const Made made = make({.seconds = 3, .trials = 3, .seed = seed});
    for (const unsigned start : {GZD_START_BLINK, GZD_START_SACCADE, GZD_START_FIXATION})
      EXPECT_EQ(eventsOf(made, start).size(), eventsOf(made, start + 1).size()) << seed;
  }
}

// The average of every fixation is the mean of the words stored in its samples, both eyes, and its
// start carries the first of them.
TEST(Session, FixationsAgreeWithTheTrace) {
  const Made made = make({.href = true, .seconds = 12, .trials = 3});
  const auto ends = eventsOf(made, GZD_END_FIXATION);
  EXPECT_GT(ends.size(), 40U);
  for (const WalkedRecord* end : ends) {
    const auto side = static_cast<std::size_t>(end->eye);
    double x = 0, hy = 0, pupil = 0;
    const auto inside = samplesWithin(made, *end);
    for (const SampleRecord* sample : inside) {
      x += sample->gx[side];
      hy += sample->hy[side];
      pupil += sample->pa[side];
      ASSERT_NE(sample->gx[side], kStoredMissing);
    }
    const auto count = static_cast<double>(inside.size());
    EXPECT_EQ(end->value(106, 0), std::lround(x / count));
    EXPECT_EQ(end->value(105, 1), std::lround(hy / count));
    EXPECT_EQ(end->value(114), std::lround(pupil / count));
    EXPECT_EQ(inside.back()->time, end->value(65));
    EXPECT_LE(end->value(115), end->value(147));
  }
  for (const WalkedRecord* start : eventsOf(made, GZD_START_FIXATION)) {
    const SampleRecord& first = sampleAt(made, start->value(33));
    EXPECT_EQ(first.gx[static_cast<std::size_t>(start->eye)], start->value(42, 0));
  }
}

TEST(Session, SaccadesRunFromTheirFirstToTheirLastSample) {
  const Made made = make({.seconds = 8, .trials = 2});
  for (const WalkedRecord* end : eventsOf(made, GZD_END_SACCADE)) {
    const auto side = static_cast<std::size_t>(end->eye);
    const auto inside = samplesWithin(made, *end);
    ASSERT_FALSE(inside.empty());
    EXPECT_EQ(inside.front()->gy[side], end->value(42, 1));
    EXPECT_EQ(inside.back()->gx[side], end->value(74, 0));
    EXPECT_EQ(inside.back()->rx, end->value(75, 0));
  }
}

// Samples without a pupil are exactly those inside blinks, and each blink lies in a saccade.
TEST(Session, BlinksCoverTheLostSamples) {
  const Made made = make({.right = false, .seconds = 40, .trials = 2});
  std::set<std::uint32_t> covered;
  for (const WalkedRecord* blink : eventsOf(made, GZD_END_BLINK)) {
    for (const SampleRecord* sample : samplesWithin(made, *blink)) covered.insert(sample->time);
    bool enclosed = false;
    for (const WalkedRecord* saccade : eventsOf(made, GZD_END_SACCADE))
      enclosed |= saccade->value(33) <= blink->value(33) && saccade->value(65) >= blink->value(65);
    EXPECT_TRUE(enclosed);
  }
  EXPECT_GT(covered.size(), 200U);
  for (const SampleRecord* sample : samplesOf(made)) {
    EXPECT_EQ(sample->pa[0] == 0, covered.contains(sample->time));
    EXPECT_EQ(sample->gx[0] == kStoredMissing, covered.contains(sample->time));
  }
}

TEST(Session, EventsPairUpAndComeLate) {
  const Made made = make({.seconds = 10, .trials = 3});
  for (const unsigned start : {GZD_START_FIXATION, GZD_START_SACCADE, GZD_START_BLINK}) {
    const auto starts = eventsOf(made, start), ends = eventsOf(made, start + 1);
    ASSERT_EQ(starts.size(), ends.size());
    for (int eye = 0; eye < 2; ++eye) {
      std::vector<std::int64_t> begun, ended;
      for (const auto* record : starts)
        if (record->eye == eye) begun.push_back(record->value(33));
      for (const auto* record : ends)
        if (record->eye == eye) ended.push_back(record->value(33));
      EXPECT_EQ(begun, ended);
    }
  }
  std::uint32_t clock = 0;
  int late = 0;
  for (const WalkedRecord& record : made.records) {
    if (record.isSample) clock = record.sample.time;
    if (!record.isSample && record.type == GZD_START_SACCADE && record.value(33) < clock) ++late;
  }
  EXPECT_GT(late, 20);
}

TEST(Session, ButtonsAndInputsAgreeWithTheSamples) {
  const Made made = make({.seconds = 4, .trials = 2});
  const auto buttons = eventsOf(made, GZD_BUTTON), inputs = eventsOf(made, GZD_INPUT);
  EXPECT_EQ(buttons.size(), 4U);
  EXPECT_EQ(inputs.size(), 4U);
  for (const auto* event : buttons)
    EXPECT_EQ(sampleAt(made, event->value(33)).buttons, event->value(86) & 0xFF);
  for (const auto* event : inputs)
    EXPECT_EQ(sampleAt(made, event->value(33)).input, event->value(85));
}

TEST(Session, MessagesOfAnExperiment) {
  const Made made = make({.right = false, .seconds = 1, .trials = 2});
  for (const char* text : {"DISPLAY_COORDS 0 0 1023 767", "TRIALID 1", "TRIALID 2", "SYNCTIME",
                           "TRIAL_RESULT 0", "RECCFG RATE 1000 FILTER 2 EYES L"})
    EXPECT_TRUE(hasText(made, text)) << text;
}

TEST(Session, LeavesAwayWhatIsSwitchedOff) {
  const Made made = make({.gaze = false,
                          .raw = true,
                          .seconds = 1,
                          .trials = 1,
                          .resolution = false,
                          .input = false,
                          .buttons = false});
  const unsigned flags = samplesOf(made).front()->flags;
  EXPECT_EQ(flags & ~SMP_TIME_ABSOLUTE,
            SMP_LEFT | SMP_RIGHT | SMP_PUPIL_POS | SMP_PUPIL_SIZE | SMP_STATUS | SMP_IS_SAMPLE);
  EXPECT_TRUE(eventsOf(made, GZD_INPUT).empty());
  EXPECT_TRUE(eventsOf(made, GZD_BUTTON).empty());
  EXPECT_FALSE(eventsOf(made, GZD_END_FIXATION)[0]->fields.contains(43));
  EXPECT_TRUE(eventsOf(made, GZD_END_FIXATION)[0]->fields.contains(104));

  const Made events = make({.seconds = 1, .trials = 1, .samples = false});
  EXPECT_TRUE(samplesOf(events).empty());
  EXPECT_TRUE(eventsOf(events, GZD_START_SAMPLES).empty());
  EXPECT_EQ(eventsOf(events, GZD_START_EVENTS)[0]->value(85), static_cast<std::int16_t>(0xC000));
}

TEST(Session, HeadDataOfTheGenerations) {
  const Made target = make({.seconds = 1, .trials = 1, .target = true});
  EXPECT_EQ(samplesOf(target)[0]->headType, 183U);
  EXPECT_NEAR(samplesOf(target)[0]->headData[2], 6000, 300);

  const Made pose = make({.generation = 4, .seconds = 1, .trials = 1, .pose = true, .ellipse = 56});
  const auto& blocks = samplesOf(pose)[0]->blocks;
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[0].length, 92U);
  EXPECT_EQ(blocks[1].length, 56U);
  EXPECT_EQ(eventsOf(pose, GZD_END_FIXATION)[0]->text.substr(0, 3), std::string("\0\x92\x02", 3));
  EXPECT_EQ(eventsOf(pose, GZD_START_SAMPLES)[0]->value(86), kPupilPrescale);
}

// The camera positions of a fixation come back out of the packed words, within the movement of a
// few degrees, and the pupil's area with them.
TEST(Session, PackedCameraData) {
  const Made made = make({.seconds = 1, .trials = 1, .rawPacked = true});
  const SampleRecord& sample = *samplesOf(made)[0];
  EXPECT_NEAR(sample.pa[0] + 32700, 900, 120);
  const int extras = sample.gx[0] + 32700;
  const double x = ((sample.px[0] + 32700) * 16 + ((extras >> 4) & 15)) / 256.0;
  EXPECT_NEAR(x, 240, 12);
  EXPECT_NEAR(extras >> 8, 2 * std::sqrt(900 / 3.14159), 4);
  EXPECT_EQ(sample.headType, 200U);
  EXPECT_EQ(eventsOf(made, GZD_START_SAMPLES)[0]->value(48), 1);
  EXPECT_EQ(sample.headData[7], sample.headData[3]);
}

TEST(Session, FaultsHappen) {
  const SessionSettings plain{.seconds = 20, .trials = 2};
  const Made sound = make(plain);
  const auto count = samplesOf(sound).size();

  SessionSettings s = plain;
  s.gap = 50;
  const Made gaps = make(s);
  const std::size_t lost = count - samplesOf(gaps).size();
  EXPECT_GE(lost, 50U);
  EXPECT_LE(lost, 2000U);

  s = plain;
  s.repeatTimes = true;
  EXPECT_EQ(repeatedTimes(sound), 0);
  EXPECT_GT(repeatedTimes(make(s)), 10);

  s = plain;
  s.unpairedBlinks = true;
  const Made unpaired = make(s);
  const auto blinkEvents = [](const Made& made) {
    return eventsOf(made, GZD_START_BLINK).size() + eventsOf(made, GZD_END_BLINK).size();
  };
  EXPECT_EQ(blinkEvents(unpaired), blinkEvents(sound) - blinkEvents(sound) / 3);

  s = plain;
  s.straySamples = true;
  const Made stray = make(s);
  EXPECT_EQ(samplesOf(stray).size(), count + 10);
  EXPECT_LT(samplesOf(stray)[0]->time, stray.trials[0].start);
}

TEST(Session, SameSettingsSameBytes) {
  const SessionSettings settings{.seconds = 2, .trials = 2, .longMessages = true, .gap = 20};
  EXPECT_EQ(make(settings).body, make(settings).body);
  SessionSettings other = settings;
  other.seed = 2;
  EXPECT_NE(make(settings).body, make(other).body);
}

TEST(Companions, MessageLogSharesItsSyncLines) {
  const Made made = make({.seconds = 1, .trials = 2, .messageLog = "x"});
  const std::string log = messageLogText(made.trials);
  int syncs = 0;
  for (const WalkedRecord* message : eventsOf(made, GZD_MESSAGE)) {
    if (!message->text.starts_with("TRACKER_TIME")) continue;
    ++syncs;
    EXPECT_NE(log.find(message->text + "\n"), std::string::npos);
    EXPECT_TRUE(message->text.ends_with(std::to_string(message->value(33))));
  }
  EXPECT_EQ(syncs, 2);
  EXPECT_TRUE(log.ends_with("Quit logger\n"));
}

TEST(Companions, FrameTable) {
  EXPECT_EQ(frameTable({0x10000, 0x10000 + 70}),
            hex("03000000 00105AAE  01000000 00000100 0400 0000  02000000 21000100 0020 0000"
                "03000000 42000100 0420 0000"));
  EXPECT_EQ(frameTableName("dir/a.gzd", 2), "dir/a2.ett");
}

}  // namespace
}  // namespace gzdsynth
