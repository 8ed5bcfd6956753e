// The options of the run, and their defaults.
#include "cli/options.h"

#include <cstring>

namespace gzdconv {

namespace {

constexpr char initial_missing_string[] = "   .";

}  // namespace

Options options;
bool quiet = false;
char missing_string[20] = "   .";

void init_options() {
  options = Options{};
  quiet = false;
  std::memcpy(missing_string, initial_missing_string, sizeof initial_missing_string);
}

}  // namespace gzdconv
