// Small recordings, record by record, for what a synthetic session does not contain.
#ifndef TESTS_GOLDEN_RECORDINGS_H
#define TESTS_GOLDEN_RECORDINGS_H

#include "GzdWriter.h"

namespace golden {

using gzdsynth::GzdWriter;

// ---- events and messages ----

// Every kind of eye event, parsed by gaze, head-referenced and raw positions, with and without
// resolution and velocity; an end before its start; a break in the data.
GzdWriter eventKinds();
// Blinks, saccades and fixations that do not pair up or leave their block.
GzdWriter blinkRepairs();
// A blink over two blocks; blocks 2 ms apart, with a configuration message between them.
GzdWriter blockRepairs();
// Messages that the filters look at, with offsets, without text, cut by a NUL, long.
GzdWriter messages();
// Several buttons in one record, inputs of both signs, and samples with those words.
GzdWriter buttonsAndInput();
// Head pose in events.
GzdWriter poseEvents();

// ---- samples ----

// Every status bit, of both eyes and of one.
GzdWriter statusFlags();
// Every flag bit of the head target, of both eyes and of one; lost target words.
GzdWriter targetFlags();
// 2000 samples a second: every second time is the one before.
GzdWriter halfMilliseconds();
// Blocks that hold gaze, head-referenced, raw or no positions; samples that lack an eye.
GzdWriter positionTypes();
// Lost pupils, resolutions out of range, positions too large for their column.
GzdWriter oddValues();
// Messages with display and display area, gaze and events to be mapped.
GzdWriter mapping();
// Geometry messages and samples with a head pose.
GzdWriter geometry();
// Flags of the head pose and the calibration warning.
GzdWriter poseFlags();
// Camera data of both encodings, the packed one behind an ordinary sample.
GzdWriter cameraData();
// Blocks with samples only and with events only, samples outside, a gap, no end of the last block.
GzdWriter blockShapes();

}  // namespace golden

#endif
