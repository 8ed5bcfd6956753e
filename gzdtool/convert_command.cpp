// The verb `convert`.
#include <sched.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

#include "command.h"
#include "convert_run.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

using gzdtables::UsageError;

// The cores that this process may use.
unsigned cores() {
  cpu_set_t set;
  if (::sched_getaffinity(0, sizeof set, &set) != 0) return 1;
  return static_cast<unsigned>(std::max(CPU_COUNT(&set), 1));
}

// Names end with a NUL, or without any NUL with a newline.
std::vector<std::string> names_in(std::istream& stream) {
  const std::string text(std::istreambuf_iterator<char>(stream), {});
  const char end = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> names;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t to = std::min(text.find(end, from), text.size());
    if (to > from) names.push_back(text.substr(from, to - from));
    from = to + 1;
  }
  return names;
}

std::vector<std::string> names_from(const std::string& list) {
  if (list == "-") return names_in(std::cin);
  std::ifstream file(list, std::ios::binary);
  if (!file) throw UsageError("cannot read the list " + list);
  return names_in(file);
}

class ConvertCommand final : public Command {
 public:
  ConvertCommand() : Command("convert", "Convert many recordings to text with gzdconv") {}

  void declare(CLI::App& app) override {
    app.add_option("FILE", plan_.recordings, "Recordings")->type_name("");
    app.add_option(
           "--files-from", list_,
           "Names of recordings, one a line, or - for standard input with a NUL behind each")
        ->type_name("LIST");
    app.add_option("-j,--jobs", jobs_, "Processes at once; by default one a core")->type_name("N");
    app.add_option("--output-dir", plan_.converter.directory,
                   "Folder of the texts; else they stand beside the recordings")
        ->type_name("DIR");
    app.add_option("--report", plan_.report, "One line of JSON a recording, in the order of input")
        ->type_name("FILE");
    app.add_option("--gzdconv", plan_.converter.program,
                   "The converter; by default the one beside this program")
        ->type_name("FILE");
    app.add_flag("--redo", plan_.redoes, "Also what has a text that is younger than the recording");
    app.footer("Options of gzdconv stand behind --, as in: gzdtool convert *.gzd -- -res -vel");
  }
  void take_rest(std::vector<std::string>&& words) override {
    plan_.converter.words = std::move(words);
  }
  [[nodiscard]] bool has_rest() const override { return true; }
  int run() override;

 private:
  ConvertPlan plan_;
  std::string list_;
  unsigned jobs_ = cores();
};

int ConvertCommand::run() {
  constexpr unsigned most_jobs = 256;
  if (jobs_ < 1 || jobs_ > most_jobs) throw UsageError("--jobs takes 1 to 256");
  plan_.jobs = jobs_;
  if (!list_.empty())
    for (std::string& name : names_from(list_)) plan_.recordings.push_back(std::move(name));
  if (plan_.recordings.empty() && list_.empty()) throw UsageError("no recordings are named");
  plan_.converter.tells_findings = !plan_.report.empty();
  check_converter_options(plan_.converter);
  return convert_recordings(plan_);
}

}  // namespace

void append_convert_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<ConvertCommand>());
}

}  // namespace gzdtool
