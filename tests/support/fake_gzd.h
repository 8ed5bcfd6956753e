// A stand-in for the access library: hands out scripted elements, and tells how it was called.
#ifndef TESTS_SUPPORT_FAKE_GZD_H
#define TESTS_SUPPORT_FAKE_GZD_H

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "gzd.h"

struct FakeElement {
  int code = 0;
  std::optional<ALLF_DATA> record;  // none: cannot be read
  std::optional<std::string> text;  // of a message
};

struct FakeRecording {
  bool exists = true;
  std::string preamble;
  int revision = 1;
  int ovilo_revision = 3;
  int system_error = 0;
  std::vector<FakeElement> elements;
  std::vector<GZD_FINDING> findings;

  // What the converter did.
  std::string name;
  int consistency = -1, events = -1, samples = -1;
  CONFIG config{};
  unsigned velocities = GZD_VELOCITY_ALL;
  std::vector<unsigned> velocities_of_samples;
  int open_handles = 0;
  int fetched = 0;

  void add_block(UINT32 time, int state, float rate = 500, UINT16 sflags = SMP_GAZE) {
    ALLF_DATA data{};
    data.rec.time = time;
    data.rec.state = static_cast<byte>(state);
    data.rec.sample_rate = rate;
    data.rec.sflags = sflags;
    data.rec.record_type = GZD_RECORD_BOTH;
    data.rec.pos_type = GZD_POSITION_GAZE;
    data.rec.eye = GZD_BLOCK_LEFT;
    elements.push_back({GZD_RECORDING, data, {}});
  }
  void add_sample(UINT32 time, UINT16 flags = 0) {
    ALLF_DATA data{};
    data.fs.time = time;
    data.fs.flags = static_cast<UINT16>(SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE | flags);
    data.fs.gx[0] = 100;
    data.fs.gy[0] = 200;
    data.fs.pa[0] = 1000;
    elements.push_back({GZD_SAMPLE, data, {}});
  }
  void add_event(int code, UINT32 start, UINT32 end = 0) {
    ALLF_DATA data{};
    data.fe.type = static_cast<INT16>(code);
    data.fe.sttime = start;
    data.fe.entime = end;
    elements.push_back({code, data, {}});
  }
  void add_message(UINT32 time, const std::string& text) {
    add_event(GZD_MESSAGE, time);
    elements.back().text = text;
  }
};

extern FakeRecording fake;

#endif
