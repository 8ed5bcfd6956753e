// The shared configuration and the text that its pointer refers to.
#include "base/config.h"

#include <string>

namespace gzd {

namespace {

struct SharedConfig {
  CONFIG config = unset_config;
  std::string debugFileName;
};

SharedConfig shared;

}  // namespace

const CONFIG& default_config() {
  return shared.config;
}

void update_default_config(const CONFIG* config) {
  if (config == nullptr) return;
  const bool debug = config->enable_debug == 1 && config->debug_file_name != nullptr;
  shared.debugFileName = debug ? config->debug_file_name : "";
  shared.config = *config;
  shared.config.debug_file_name = debug ? shared.debugFileName.data() : nullptr;
}

}  // namespace gzd
