// What kind of recording to make.
#ifndef GZDSYNTH_SESSION_SETTINGS_H
#define GZDSYNTH_SESSION_SETTINGS_H

#include <cstdint>
#include <string>

namespace gzdsynth {

struct SessionSettings {
  std::string output = {};
  int generation = 3;  // 1..4
  int rate = 1000;     // samples per second: 250, 500, 1000 or 2000
  bool left = true, right = true;
  bool gaze = true, href = false, raw = false;
  int seconds = 10;  // of recording, over all trials
  int trials = 4;
  std::uint64_t seed = 1;
  std::uint32_t startTime = 100000;  // ms

  bool zip = false;
  bool target = false;    // head-target words
  bool pose = false;      // head-pose blocks, generation 4
  bool geometry = false;  // set-up messages of camera, screen and eyes
  int ellipse = 0;        // bytes of ellipse blocks, 56 or 72, generation 4; 0: none
  bool rawPacked = false;
  bool longMessages = false;
  bool resolution = true, input = true, buttons = true;
  bool samples = true;

  // Faults.
  int gap = 0;  // ms of samples lost now and then
  bool repeatTimes = false;
  bool unpairedBlinks = false;
  bool straySamples = false;
  std::uint64_t cut = 0;  // bytes of the file's end left away
  bool end_tag = true;

  std::string messageLog = {};  // file to write; empty: none
  bool videoTable = false;      // a frame table for each trial beside the output

  // Packed camera data are whole words and stay unscaled.
  [[nodiscard]] int gaze_prescale() const { return rawPacked ? 1 : 10; }
  [[nodiscard]] int eyes() const { return (left ? 1 : 0) + (right ? 1 : 0); }
};

}  // namespace gzdsynth

#endif
