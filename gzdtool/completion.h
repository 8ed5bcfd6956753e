// Completions of gzdtool's command line.
#ifndef GZDTOOL_COMPLETION_H
#define GZDTOOL_COMPLETION_H

#include <string>
#include <vector>

#include "declared.h"

namespace gzdtool {

[[nodiscard]] std::string bash_completion(const std::vector<DeclaredVerb>& verbs);
[[nodiscard]] std::string zsh_completion(const std::vector<DeclaredVerb>& verbs);
[[nodiscard]] std::string fish_completion(const std::vector<DeclaredVerb>& verbs);

}  // namespace gzdtool

#endif
