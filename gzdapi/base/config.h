// The configuration that all open files share: that of the last one opened.
#ifndef GZDAPI_CONFIG_H
#define GZDAPI_CONFIG_H

#include "gzd_data.h"

namespace gzd {

// What a file is opened with when nothing else is said.
constexpr CONFIG unset_config{MISSING_DATA, MISSING_DATA, 0, nullptr};

// The shared configuration. Its debug_file_name is null unless debugging is enabled.
const CONFIG& default_config();

// Copies `config`, the debug file's name included, into the shared one; null leaves it.
void update_default_config(const CONFIG* config);

}  // namespace gzd

#endif
