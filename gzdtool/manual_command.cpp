// The verb `manual`: the manual page and the completions, made when the program is built.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>

#include "command.h"
#include "completion.h"
#include "declared.h"
#include "sinks/byte_sink.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

constexpr const char* page_head = R"(.Dd November 22, 2026
.Dt GZDTOOL 1
.Os gzdtool )" GZDTOOL_VERSION R"(
.Sh NAME
.Nm gzdtool
.Nd what is in GZD eye-tracker recordings, as typed tables
.Sh SYNOPSIS
.Nm
.Ar verb
.Op Ar option ...
.Op Ar recording ...
.Nm
.Cm help
.Op Ar verb
.Nm
.Fl -version
.Sh DESCRIPTION
.Nm
tells what is in a recording and whether it can be trusted, and prints its samples, eye events,
messages, blocks and trials as tables.
Data go to standard output, words to standard error.
A file appears under its name when it is whole.
The verbs:
)";

constexpr const char* page_tail = R"(.Sh EXIT STATUS
.Bl -tag -width 3n
.It 0
All was done.
.It 1
A recording or an output failed.
.It 2
The command line makes no sense.
.It 3
.Cm check :
all recordings could be read, but one is lossy or was repaired.
.El
.Sh EXAMPLES
.Dl gzdtool info demo.gzd
.Dl gzdtool samples --columns velocity --output demo.tsv.gz demo.gzd
.Dl gzdtool export demo.gzd --output-dir tables
.Dl gzdtool convert *.gzd --output-dir texts -- -res -vel
.Sh SEE ALSO
.Xr gzdconv 1 ,
.Xr gzdsynth 1 ,
.Xr gzdapi 3
.Pp
Each column of the tables is told in
.Pa tables.md
of the documentation, more uses in
.Pa gzdtool.md .
)";

// A line of text: nothing in it is a request of the formatter.
std::string page_text(const std::string& text) {
  std::string line = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) c == '\\' ? line += "\\e" : line += c;
  return line.ends_with('.') ? line + "\n" : line + ".\n";
}

std::string page_option(const DeclaredOption& option) {
  std::string line = ".It";
  for (const std::string& name : option.names)
    line += (line == ".It" ? " Fl " : " , Fl ") + name.substr(1);
  if (!option.value.empty()) line += " Ar " + option.value;
  return line + "\n" + page_text(option.description);
}

std::string page_verbs(const VerbsAlike& verbs) {
  std::string text = fmt::format(".Ss {}\n", fmt::join(verbs.names, ", "));
  for (const std::string& summary : verbs.summaries) text += page_text(summary);
  if (!verbs.first.argument.empty()) text += ".Pp\n" + page_text(verbs.first.argument);
  text += ".Bl -tag -width indent\n";
  for (const DeclaredOption& option : verbs.first.options)
    if (option.names.back() != "--help") text += page_option(option);
  text += ".El\n";
  return verbs.first.footer.empty() ? text : text + ".Pp\n" + page_text(verbs.first.footer);
}

std::string manual_page(const std::vector<DeclaredVerb>& verbs) {
  std::string page = page_head;
  for (const VerbsAlike& alike : put_together(verbs)) page += page_verbs(alike);
  return page + page_tail;
}

class ManualCommand final : public Command {
 public:
  ManualCommand() : Command("manual", "Print the manual page or completions for a shell") {}

  void declare(CLI::App& app) override {
    app_ = &app;
    app.group("");  // it is for those who build and pack
    app.add_option("FORMAT", format_, "man, bash, zsh or fish")->required()->type_name("");
  }
  int run() override {
    const auto output = open_byte_sink("-");
    output->write(text());
    output->close();
    return exit_whole;
  }

 private:
  [[nodiscard]] std::string text() const {
    const std::vector<DeclaredVerb> verbs = declared_verbs(*app_->get_parent());
    if (format_ == "man") return manual_page(verbs);
    if (format_ == "bash") return bash_completion(verbs);
    if (format_ == "zsh") return zsh_completion(verbs);
    if (format_ == "fish") return fish_completion(verbs);
    throw gzdtables::UsageError("unknown format '" + format_ + "': man, bash, zsh or fish");
  }

  CLI::App* app_ = nullptr;
  std::string format_;
};

}  // namespace

void append_manual_command(std::vector<std::unique_ptr<Command>>& commands) {
  commands.push_back(std::make_unique<ManualCommand>());
}

}  // namespace gzdtool
