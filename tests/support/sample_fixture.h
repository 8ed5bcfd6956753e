// Hand-made samples and blocks, and the text that the line writers make of them.
#ifndef TESTS_GZDCONV_SAMPLE_FIXTURE_H
#define TESTS_GZDCONV_SAMPLE_FIXTURE_H

#include <algorithm>
#include <string>

#include "asc/output.h"
#include "cli/options.h"
#include "gzd.h"
#include "lines/resolution.h"
#include "samples/sample_lines.h"
#include "support/capture.h"

using namespace gzdconv;

class SampleLinesTest : public AscTest {
 protected:
  SampleLinesTest() {
    options.tracker_revision = 2;
    new_block();
  }
  ~SampleLinesTest() override { lpbuffer.flush(); }

  // What a recording record does to the writer; due after every change of options.
  static void new_block() {
    begin_sample_block();
    options.current_eye = -1;
  }

  // The line of a sample at the start of a block.
  std::string line_of(FSAMPLE sample) {
    new_block();
    EXPECT_EQ(write_sample(handle, block, sample), 0);
    return asc();
  }

  // The same without time and positions: what follows column `from`.
  std::string columns_from(int from, const FSAMPLE& sample) {
    const std::string line = line_of(sample);
    std::size_t at = 0;
    for (int i = 0; i < from; ++i) at = line.find('\t', at + 1);
    return line.substr(at == std::string::npos ? line.size() - 1 : at);
  }

  static RECORDINGS make_block(byte eye) {
    RECORDINGS made = {};
    made.sample_rate = 1000;
    made.state = GZD_BLOCK_START;
    made.record_type = GZD_RECORD_BOTH;
    made.eye = eye;
    return made;
  }

  // A record with only a time: every field as the reader leaves it when absent.
  static FSAMPLE make_bare_sample(UINT32 time) {
    FSAMPLE s = {};
    for (float* const pair :
         {s.px, s.py, s.hx, s.hy, s.pa, s.gx, s.gy, s.gxvel, s.gyvel, s.hxvel, s.hyvel, s.rxvel,
          s.ryvel, s.fgxvel, s.fgyvel, s.fhxvel, s.fhyvel, s.frxvel, s.fryvel}) {
      std::fill(pair, pair + 2, NOT_RECORDED);
    }
    for (float* const pair :
         {s.ex, s.ey, s.emajor, s.eminor, s.eangle, s.unused_headInSpaceX, s.unused_headInSpaceY}) {
      std::fill(pair, pair + 2, MISSING_DATA);
    }
    for (float* const triple : {s.eyeInHeadX, s.eyeInHeadY, s.headRotation, s.headPosition}) {
      std::fill(triple, triple + 3, MISSING_DATA);
    }
    s.rx = s.ry = s.headInSpaceX = s.headInSpaceY = MISSING_DATA;
    s.hrgx = s.hrgy = s.ergx = s.ergy = MISSING_DATA;
    s.time = time;
    s.flags = SMP_IS_SAMPLE;
    s.input = s.errors = NOT_RECORDED_WORD;
    s.htype = INT16_MIN;
    s.headMarkerFlags = 0xFFFF8000;
    return s;
  }

  // Gaze 512.0, 384.0 and pupil 900 of the left eye, 514.5, 382.5 and 880 of the right.
  static FSAMPLE make_sample(UINT32 time = 1000) {
    FSAMPLE s = make_bare_sample(time);
    s.flags |= SMP_LEFT | SMP_RIGHT | SMP_GAZE | SMP_PUPIL_SIZE;
    s.gx[0] = 512.0f;
    s.gy[0] = 384.0f;
    s.pa[0] = 900.0f;
    s.gx[1] = 514.5f;
    s.gy[1] = 382.5f;
    s.pa[1] = 880.0f;
    return s;
  }

  RECORDINGS block = make_block(GZD_BLOCK_BOTH);
  GZDFILE* handle = nullptr;
};

#endif
