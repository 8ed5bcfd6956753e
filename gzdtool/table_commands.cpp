// The verbs that print one table: samples, events, fixations, saccades, blinks, messages, inputs,
// blocks, trials.
#include <CLI/CLI.hpp>

#include "command.h"
#include "table_request.h"

namespace gzdtool {

namespace {

class TableCommand final : public Command {
 public:
  explicit TableCommand(gzdtables::Table table)
      : Command(std::string(name_of(table)), "Print the table of " + std::string(name_of(table)) +
                                                 ": one row " + std::string(row_of(table))),
        table_(table) {}

  void declare(CLI::App& app) override { declare_table_options(app, options_, table_); }
  int run() override { return write_table(options_, table_); }

 private:
  gzdtables::Table table_;
  TableOptions options_;
};

}  // namespace

void append_table_commands(std::vector<std::unique_ptr<Command>>& commands) {
  for (const gzdtables::Table table : gzdtables::all_tables())
    commands.push_back(std::make_unique<TableCommand>(table));
}

}  // namespace gzdtool
