// golden_recordings RECORDING OUTPUT.gzd: makes a recording of its description, a file or the name
// of one of tests/golden/recordings.
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "recording_text.h"

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::invalid_argument("two arguments: RECORDING OUTPUT.gzd");
    const bool isFile = std::ifstream(argv[1]).is_open();
    (isFile ? golden::recording_of_file(argv[1]) : golden::small_recording(argv[1])).save(argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "golden_recordings: %s\n", error.what());
    return 1;
  }
}
