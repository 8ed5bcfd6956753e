// gzdconv: converts GZD recordings to ASC text.
#include <cstdio>
#include <exception>
#include <new>

#include "cli/surroundings.h"
#include "process.h"

using namespace gzdconv;

int main(int argc, char** argv) {
  prepare_process();
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("gzdconv: Cannot allocate memory\n", stderr);
  } catch (const std::exception& error) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", error.what());
  }
  return 1;
}
