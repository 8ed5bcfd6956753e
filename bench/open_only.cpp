// Opens a recording through the library, counts its trials and closes it: what a client pays before
// it has seen the first element. Prints the number of elements.
#include <cstdio>

#include "gzd.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Usage: open_only RECORDING.gzd\n");
    return 2;
  }
  int result = 0;
  GZDFILE* const file = gzd_open_file(argv[1], GZD_CONSISTENCY_REPAIR, GZD_LOAD_EVENTS, 1, &result);
  if (file == nullptr) return 1;
  const int trials = gzd_get_trial_count(file);
  std::printf("elements %u\ntrials %d\n", gzd_get_element_count(file), trials);
  return gzd_close_file(file);
}
