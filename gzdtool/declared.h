// What the verbs declare of themselves, as data: the manual page and the completions are made of
// it.
#ifndef GZDTOOL_DECLARED_H
#define GZDTOOL_DECLARED_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace gzdtool {

struct DeclaredOption {
  std::vector<std::string> names;  // with their dashes, the long one last
  std::string value;               // what the value is called: "FILE"; empty for a flag
  std::string description;
  std::vector<std::string> words = {};  // the values there are; empty: any

  bool operator==(const DeclaredOption&) const = default;
  [[nodiscard]] bool is_folder() const { return value == "DIR"; }
  [[nodiscard]] bool is_file() const { return value == "FILE" || value == "LIST"; }
};

struct DeclaredVerb {
  std::string name, summary, footer;
  std::string argument;  // description of the recordings it takes; empty for none
  std::vector<DeclaredOption> options;
};

// Verbs that stand side by side and take the same: one of them, and the names of all.
struct VerbsAlike {
  DeclaredVerb first;
  std::vector<std::string> names, summaries;
};
[[nodiscard]] std::vector<VerbsAlike> put_together(const std::vector<DeclaredVerb>& verbs);

// The verbs of the help, in its order.
[[nodiscard]] std::vector<DeclaredVerb> declared_verbs(const CLI::App& root);

}  // namespace gzdtool

#endif
