// What every verb of gzdtool has in common.
#ifndef GZDTOOL_COMMAND_H
#define GZDTOOL_COMMAND_H

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace gzdtool {

// Exit statuses.
constexpr int exit_whole = 0;   // all was done
constexpr int exit_failed = 1;  // a recording or an output failed
constexpr int exit_usage = 2;   // the command line makes no sense
constexpr int exit_lossy = 3;   // done, but from a recording that is lossy or was repaired

// One verb: what it takes and what it does. One file a verb declares its own.
class Command {
 public:
  Command(std::string name, std::string summary)
      : name_(std::move(name)), summary_(std::move(summary)) {}
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::string& summary() const { return summary_; }

  // Declares options and arguments, which parsing writes into this object.
  virtual void declare(CLI::App& app) = 0;
  // Whether words behind "--" are the verb's own, and those words.
  [[nodiscard]] virtual bool has_rest() const { return false; }
  virtual void take_rest(std::vector<std::string>&& /*words*/) {}
  // Returns an exit status. Throws gzdtables::UsageError for a command line that makes no sense.
  [[nodiscard]] virtual int run() = 0;

 private:
  std::string name_, summary_;
};

// Every verb, in the order of the help.
[[nodiscard]] std::vector<std::unique_ptr<Command>> all_commands();

// The verbs of each file.
void append_info_command(std::vector<std::unique_ptr<Command>>& commands);
void append_check_command(std::vector<std::unique_ptr<Command>>& commands);
void append_table_commands(std::vector<std::unique_ptr<Command>>& commands);
void append_report_command(std::vector<std::unique_ptr<Command>>& commands);
void append_bids_command(std::vector<std::unique_ptr<Command>>& commands);
void append_convert_command(std::vector<std::unique_ptr<Command>>& commands);
void append_export_command(std::vector<std::unique_ptr<Command>>& commands);
void append_manual_command(std::vector<std::unique_ptr<Command>>& commands);
void append_schema_command(std::vector<std::unique_ptr<Command>>& commands);

// Version, commit and libraries, a line each.
[[nodiscard]] std::string version_text();

// A line on standard error, with the program's name in front. Names of files and texts of
// recordings in it do not speak to a terminal.
void complain(const std::string& text);

}  // namespace gzdtool

#endif
