// Records that order, repairs and trials turn on, in any sequence that a source of choices asks
// for: times that repeat, fall back and leave gaps, blocks that overlap or never end, eye events
// that do not pair, messages that cut trials, samples of every shape.
#ifndef TESTS_SUPPORT_RANDOM_RECORDS_H
#define TESTS_SUPPORT_RANDOM_RECORDS_H

#include <functional>
#include <iterator>
#include <utility>

#include "GzdWriter.h"

class RandomRecords {
 public:
  // `choose(n)` gives a number below n.
  RandomRecords(gzdsynth::GzdWriter& writer, std::function<std::size_t(std::size_t)> choose)
      : writer_(writer), choose_(std::move(choose)) {}

  void add() {
    static constexpr int steps[] = {0, 0, 1, 1, 2, 2, 4, 4, 5, 30, -1, -2, -40};
    time_ += static_cast<std::uint32_t>(steps[choose_(std::size(steps))]);
    switch (choose_(14)) {
      case 0:
        return add_block_start();
      case 1:
        return add_block_end();
      case 2:
      case 3:
      case 4:
      case 5:
        return add_eye_event();
      case 6:
      case 7:
        return add_message();
      case 8:
        writer_.button(time_, static_cast<int>(choose_(4)) << 8 | 1);
        return;
      case 9:
        writer_.input(time_, static_cast<int>(choose_(4)));
        return;
      case 10:
        return add_samples(1, random_sample());
      default:
        return add_samples(1 + choose_(20), plain_sample());
    }
  }

 private:
  using EventRecord = gzdsynth::EventRecord;
  using SampleRecord = gzdsynth::SampleRecord;

  template <class T, std::size_t N>
  T one_of(const T (&values)[N]) {
    return values[choose_(N)];
  }

  void add_block_start() {
    static constexpr double rates[] = {250, 500, 500, 1000, 2000, 0, 777};
    static constexpr int flags[] = {0x8500, 0x4500, 0xC500, 0xCF00, 0xCFF8, 0, 0xD7F1};
    gzdsynth::BlockStart block{.time = time_, .rate = one_of(rates), .sample_flags = one_of(flags)};
    block.event_flags = choose_(2) == 0 ? block.sample_flags : one_of(flags);
    if (choose_(4) == 0) block.gaze_prescale = static_cast<int>(choose_(20));
    if (choose_(4) == 0) block.pupilPrescale = static_cast<int>(choose_(20));
    step_ = block.rate > 300 ? 1000 / static_cast<std::uint32_t>(block.rate) : 4;
    if (choose_(4) != 0) writer_.start_events(block);
    if (choose_(4) != 0) writer_.start_samples(block);
  }

  void add_block_end() {
    if (choose_(4) != 0) writer_.end_samples(time_);
    if (choose_(4) != 0) writer_.end_events(time_);
  }

  void add_eye_event() {
    const auto type = static_cast<unsigned>(GZD_START_BLINK + choose_(6));
    EventRecord record(type, static_cast<int>(choose_(2)));
    record.start(type % 2 == 1 ? time_ : time_ - static_cast<std::uint32_t>(choose_(60)));
    if (type % 2 == 0) record.end(time_).gaze_average(5000, 4000).velocity_peak(300);
    writer_.event(record);
  }

  void add_message() {
    static constexpr const char* texts[] = {"TRIALID 1",
                                            "TRIAL OK",
                                            "!V TRIAL_VAR x 1",
                                            "RECCFG CR 1000 2 1 LR",
                                            "GAZE_COORDS",
                                            "7 offset",
                                            "!V LONGMS_ST 1_first",
                                            "!V LONGMS_CONT 1_second",
                                            "-12 negative",
                                            "END",
                                            "!V LONGMS_ST 2_other",
                                            "TRACKER_TIME 1 1000.5",
                                            "VFRAME 1 2 3",
                                            "DISPLAY_COORDS 0 0 1023 767"};
    writer_.message(time_, one_of(texts));
  }

  // Gaze and pupil size of both.
  static constexpr unsigned both_eyes = SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_PUPIL_SIZE;

  SampleRecord plain_sample() {
    SampleRecord sample{.flags = choose_(2) == 0
                                     ? SMP_TIME_ABSOLUTE | SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE
                                     : SMP_TIME_ABSOLUTE | both_eyes | SMP_RESOLUTION | SMP_STATUS};
    sample.gx = {4000 + static_cast<int>(choose_(2000)), 5100};
    sample.gy = {3000, 3100};
    sample.pa = {900, 800};
    return sample;
  }

  SampleRecord random_sample() {
    static constexpr unsigned kinds[] = {
        SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE,
        both_eyes | SMP_STATUS,
        both_eyes | SMP_HREF | SMP_RESOLUTION | SMP_STATUS | SMP_INPUT | SMP_BUTTONS |
            SMP_HEAD_DATA,
        SMP_RIGHT | SMP_HREF | SMP_GAZE | SMP_PUPIL_SIZE | SMP_EXTENDED,
        both_eyes | SMP_EXTENDED | SMP_SKIP_BLOCKS,
        both_eyes | SMP_PUPIL_POS,
        SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_EXTENDED | SMP_HALF_MS,
        SMP_INPUT};
    SampleRecord sample{.flags = one_of(kinds), .step = static_cast<unsigned>(choose_(4))};
    if (choose_(3) != 0) sample.flags |= SMP_TIME_ABSOLUTE;
    sample.headType = choose_(2) == 0 ? 0xB8 : static_cast<unsigned>(choose_(256));
    for (const std::size_t eye : {0U, 1U}) {
      sample.gx[eye] = static_cast<int>(choose_(256) << 8);
      sample.gy[eye] = static_cast<int>(choose_(256) << 5);
      sample.pa[eye] = choose_(4) == 0 ? -static_cast<int>(choose_(900)) : 900;
    }
    if (choose_(2) == 0) sample.blocks.push_back(gzdsynth::head_pose_block({}));
    if (choose_(2) == 0) sample.blocks.push_back(gzdsynth::ellipse_block72({}));
    if (choose_(2) == 0) sample.skipped.push_back(gzdsynth::unknown_block(9, gzdsynth::Bytes(5)));
    return sample;
  }

  // A run in the rhythm of the last block.
  void add_samples(std::size_t count, SampleRecord sample) {
    for (; count > 0; --count) {
      sample.time = time_;
      writer_.sample(sample);
      sample.gx[0] += 7;
      if (count > 1) time_ += step_;
    }
  }

  gzdsynth::GzdWriter& writer_;
  std::function<std::size_t(std::size_t)> choose_;
  std::uint32_t time_ = 1000, step_ = 2;
};

#endif
