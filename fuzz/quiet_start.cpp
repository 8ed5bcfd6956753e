// The start of every target that has nothing to set up but quiet.
#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::silence_standard_output();
  fuzz::swallow_log();
  return 0;
}
