// gzdtool: what is in a recording, as tables. Data goes to standard output, words to standard
// error.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>

#include "command.h"
#include "gzd.h"
#include "recording_options.h"
#include "sinks/byte_sink.h"
#include "sinks/escape.h"
#include "tables/schema.h"

namespace {

using gzdtool::Command;
using Commands = std::vector<std::unique_ptr<Command>>;

std::string quoted_with_nearest(const std::string& word, const std::vector<std::string>& known) {
  const std::string near = gzdtables::nearest(word, known);
  return "'" + word + "'" + (near.empty() ? "" : ", did you mean '" + near + "'?");
}

// The long names of the options of a verb.
std::vector<std::string> options_of(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options())
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

// Words that no option and no argument took.
void refuse_leftovers(const CLI::App& app) {
  const std::vector<std::string> left = app.remaining();
  if (left.empty()) return;
  const std::string word = left.front().substr(0, left.front().find('='));
  throw gzdtables::UsageError("unknown option " + quoted_with_nearest(word, options_of(app)));
}

void refuse_unknown_verb(const Commands& commands, const std::string& word) {
  std::vector<std::string> names;
  for (const auto& command : commands) names.push_back(command->name());
  if (std::find(names.begin(), names.end(), word) != names.end()) return;
  throw gzdtables::UsageError("unknown verb " + quoted_with_nearest(word, names));
}

int run(const Commands& commands, const CLI::App& app) {
  for (const auto& command : commands) {
    const CLI::App* const verb = app.get_subcommand(command->name());
    if (!verb->parsed()) continue;
    refuse_leftovers(*verb);
    return command->run();
  }
  return gzdtool::exit_usage;
}

// Cuts the words behind "--" off for a verb that has a use for them. Returns how many are left.
int without_rest(const Commands& commands, int argc, char** argv) {
  if (argc < 2) return argc;
  for (const auto& command : commands) {
    if (command->name() != argv[1] || !command->has_rest()) continue;
    char** const mark = std::find(argv + 2, argv + argc, std::string_view("--"));
    if (mark == argv + argc) return argc;
    command->take_rest(std::vector<std::string>(mark + 1, argv + argc));
    return static_cast<int>(mark - argv);
  }
  return argc;
}

// "help VERB" is the verb's --help, "help" the program's.
std::vector<std::string> with_help_as_option(int argc, char** argv) {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (words.empty() || words.front() != "help") return words;
  words.erase(words.begin());
  words.resize(std::min<std::size_t>(words.size(), 1));
  words.emplace_back("--help");
  return words;
}

// Only the verb at hand declares its options, to start quickly. The manual tells of all.
void declare_verbs(const Commands& commands, CLI::App& app, const std::string& wanted) {
  for (const auto& command : commands) {
    CLI::App* const verb = app.add_subcommand(command->name(), command->summary());
    verb->allow_extras();
    if (command->name() == wanted || command->name() == "manual" || wanted == "manual")
      command->declare(*verb);
  }
}

int parse_and_run(int argc, char** argv) {
  const Commands commands = gzdtool::all_commands();
  CLI::App app("What is in a GZD recording, as tables.", "gzdtool");
  app.require_subcommand(1);
  app.set_version_flag("--version", gzdtool::version_text());
  std::vector<std::string> words = with_help_as_option(without_rest(commands, argc, argv), argv);
  declare_verbs(commands, app, words.empty() ? "" : words.front());
  if (!words.empty() && words.front()[0] != '-') refuse_unknown_verb(commands, words.front());
  std::reverse(words.begin(), words.end());  // as the parser takes them
  try {
    app.parse(words);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    throw gzdtables::UsageError(error.what());
  }
  return run(commands, app);
}

}  // namespace

namespace gzdtool {

std::vector<std::unique_ptr<Command>> all_commands() {
  Commands commands;
  append_info_command(commands);
  append_check_command(commands);
  append_table_commands(commands);
  append_export_command(commands);
  append_schema_command(commands);
  append_convert_command(commands);
  append_bids_command(commands);
  append_manual_command(commands);
  append_report_command(commands);
  return commands;
}

void complain(const std::string& text) {
  std::string shown;
  append_shown(shown, text);
  std::fprintf(stderr, "gzdtool: %s\n", shown.c_str());
}

}  // namespace gzdtool

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  gzdtool::log_to_standard_error();
  try {
    return parse_and_run(argc, argv);
  } catch (const gzdtables::UsageError& error) {
    gzdtool::complain(error.what());
    return gzdtool::exit_usage;
  } catch (const std::bad_alloc&) {
    gzdtool::complain("memory ran out");
  } catch (const std::exception& error) {
    gzdtool::complain(error.what());
  }
  return gzdtool::exit_failed;
}
