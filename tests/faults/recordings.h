// The recordings that faults are tried on.
#ifndef TESTS_FAULTS_RECORDINGS_H
#define TESTS_FAULTS_RECORDINGS_H

#include <cstdint>

#include "GzdWriter.h"

// A short block with samples, an eye event of each kind, a message, a button and an input.
inline gzdsynth::GzdWriter small_recording(std::uint32_t samples = 40) {
  using gzdsynth::EventRecord;
  gzdsynth::GzdWriter writer(3);
  writer.message(900, "TRIALID 1").start_block({.time = 1000, .rate = 1000});
  for (std::uint32_t i = 0; i < samples; ++i) {
    const std::uint32_t time = 1000 + i;
    writer.gaze_sample(time, 500 + i % 100, 400, 900);
    if (i == 10) writer.event(EventRecord(GZD_START_FIXATION).start(1000));
    if (i == 20)
      writer.event(EventRecord(GZD_END_FIXATION).start(1000).end(1015).gaze_average(5000, 4000));
  }
  writer.button(1005, 0x0101).input(1006, 7).message(1007, "a message");
  return std::move(writer.end_block(1000 + samples));
}

#endif
