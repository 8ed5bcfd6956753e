// The recordings that conversions are timed on.
#ifndef BENCH_RECORDINGS_H
#define BENCH_RECORDINGS_H

#include <string>
#include <vector>

struct Recording {
  std::string name;  // for tables
  std::string path;
  double samples = 0;   // as recorded; 0 for events only
  double elements = 0;  // of the index, events included
};

// What a figure "each" divides by: samples, elements where there are none.
inline double items_of(const Recording& recording) {
  return recording.samples > 0 ? recording.samples : recording.elements;
}

struct Recordings {
  Recording hour;        // binocular, 1000 samples a second; one hour unless another size is chosen
  Recording compressed;  // the same
  Recording monocular;   // half the time, 2000 a second
  Recording events;      // the same as the first without samples
  Recording second;      // 1 s: what starting costs
  Recording minute;
  Recording long_one;  // four times the first
};

// Makes them in `directory` with gzdsynth; `minutes` is the size of the first.
Recordings make_recordings(const std::string& directory, int minutes);

#endif
