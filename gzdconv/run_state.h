// What a run of the converter remembers from record to record: facts of the recording that is open,
// and of its block. `convert` owns the changes of file and block, and hands it down to the writers.
#ifndef GZDCONV_RUN_STATE_H
#define GZDCONV_RUN_STATE_H

#include "gzd.h"

namespace gzdconv {

// Of trackers.
enum class Generation {
  other = GZD_TRACKER_OTHER,
  kestrel = GZD_TRACKER_KESTREL,
  falcon = GZD_TRACKER_FALCON,
  osprey = GZD_TRACKER_OSPREY
};

// The first revision of the file format whose blocks tell head poses.
constexpr int first_pose_revision = 2;

// The head columns that samples carry.
enum class HeadData { none, markers, target, pose };

// What the samples of a block have been so far: none yet, ordinary, or raw ones.
enum class BlockKind { fresh, ordinary, raw };

// The position types, GZD_POSITION_..., last from one block to the next until that chooses its own.
struct BlockState {
  int event_position = GZD_POSITION_GAZE;
  int sample_position = GZD_POSITION_GAZE;
  HeadData head_data = HeadData::none;
  BlockKind kind = BlockKind::fresh;
};

struct RunState {
  GZDFILE* recording = nullptr;  // borrowed while a file is converted, else null
  Generation generation = Generation::other;
  int format_revision = 0;  // of the recording's file format
  bool sample_header_printed = false;
  // Samples of the file carry the calibration-warning character, and its header the head-marker
  // legend. Set at the file's first sample.
  bool prints_pose_flags = false;
  bool event_header_printed = false;
  BlockState block;
};

}  // namespace gzdconv

#endif
