// golden_recordings RECORDING.txt OUTPUT.gzd: makes a recording of its description.
#include <cstdio>
#include <stdexcept>

#include "recording_text.h"

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::invalid_argument("two arguments: RECORDING.txt OUTPUT.gzd");
    golden::recording_of_file(argv[1]).save(argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "golden_recordings: %s\n", error.what());
    return 1;
  }
}
