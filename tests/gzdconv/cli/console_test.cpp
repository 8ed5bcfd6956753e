#include "cli/console.h"

#include <pty.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "cli/visible_text.h"
#include "gzd.h"
#include "support/capture.h"

using namespace gzdconv;

namespace {

class ConsoleTest : public AscTest {};

TEST_F(ConsoleTest, TitlesStandInTheMiddle) {
  EXPECT_EQ(console([] { print_box("ab"); }),
            std::string(38, '=') + "ab" + std::string(39, '=') + "\n");
  EXPECT_EQ(console([] { print_box(std::string(80, 'x').c_str()); }), std::string(80, 'x') + "\n");
}

TEST_F(ConsoleTest, PreambleIsABox) {
  const std::string text =
      console([] { print_preamble_text("a.gzd", "** DATE: today\n\n** 1\n*"); });
  const auto row = [](const std::string& line) {
    return "|" + line + std::string(77 - line.size(), ' ') + "|\n";
  };
  EXPECT_EQ(text, std::string(28, '=') + "Preamble of file a.gzd" + std::string(29, '=') + "\n" +
                      row(" DATE: today") + row("") + row(" 1") + row("") + std::string(79, '=') +
                      "\n\n");
}

TEST_F(ConsoleTest, LongPreambleLinesAreNotCut) {
  const std::string line(100, 'x');
  const std::string text =
      console([&] { print_preamble_text("a.gzd", ("** " + line + "\n").c_str()); });
  EXPECT_NE(text.find("| " + line + "|\n"), std::string::npos);
}

TEST_F(ConsoleTest, ControlCharactersAreMadeVisible) {
  EXPECT_EQ(visible("a\x1b[31m\x7f\t\n", "\n"), "a^[[31m^?^I\n");
  EXPECT_EQ(visible("\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x91\x81"),
            "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x91\x81");
  EXPECT_EQ(visible("\x9b"
                    "31m \xC2\x9b \xC3"),
            "\\x9b31m \\xc2\\x9b \\xc3");
}

TEST_F(ConsoleTest, TerminalsGetNoEscapesOfARecording) {
  int master = -1, terminal = -1;
  ASSERT_EQ(openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
  const int before = dup(STDOUT_FILENO);
  dup2(terminal, STDOUT_FILENO);
  print_preamble_text("\x1b.gzd", "** \x1b[2J\n");
  hear_library();
  print_log("of \x1b\n");
  std::fflush(stdout);
  dup2(before, STDOUT_FILENO);
  hear_library();
  char shown[2000] = {};
  ASSERT_GT(read(master, shown, sizeof shown - 1), 0);
  for (const int descriptor : {before, terminal, master}) close(descriptor);
  EXPECT_EQ(std::string(shown).find('\x1b'), std::string::npos);
  EXPECT_NE(std::string(shown).find("| ^[[2J "), std::string::npos);
}

TEST_F(ConsoleTest, ProgressShowsEveryPercentageOnce) {
  const auto shown = [](std::uint64_t count, std::uint64_t steps) {
    return console([=] {
      Progress progress(count);
      for (std::uint64_t i = 0; i < steps; ++i) progress.step();
    });
  };
  EXPECT_EQ(shown(0, 100), "");
  EXPECT_EQ(shown(3, 3),
            "Processed [***       ]33%\rProcessed [******    ]66%\rProcessed [**********]100%\r");
  EXPECT_EQ(shown(1, 1), "");  // 100% again
  std::string expected;
  for (int percent = 0; percent <= 100; ++percent) {
    const std::string stars(static_cast<std::size_t>(percent / 10), '*');
    const std::string blanks(static_cast<std::size_t>(10 - percent / 10), ' ');
    expected += "Processed [" + stars + blanks + "]" + std::to_string(percent) + "%\r";
  }
  EXPECT_EQ(shown(1234, 1234), expected);
}

TEST_F(ConsoleTest, QuietRunsShowFailuresButNoWarnings) {
  const auto both = [] {
    return console([] {
      warn("warning %d\n", 1);
      report("failure %d\n", 2);
    });
  };
  EXPECT_EQ(both(), "warning 1\nfailure 2\n");
  quiet = true;
  EXPECT_EQ(both(), "failure 2\n");
}

TEST_F(ConsoleTest, LogFileKeepsWhatIsToldAndLogged) {
  const std::string name = testing::TempDir() + "gzdconv-console-test.log";
  ASSERT_TRUE(open_log_file(name));
  quiet = true;
  const std::string shown = console([] {
    warn("warning\n");
    report("failure\n");
    print_log("library %d\n", 7);
  });
  close_log_file();
  EXPECT_EQ(shown, "failure\nlibrary 7\n");
  std::ostringstream kept;
  kept << std::ifstream(name).rdbuf();
  EXPECT_EQ(kept.str(), "warning\nfailure\nlibrary 7\n");
  std::remove(name.c_str());
  EXPECT_EQ(console([] { print_log("%s", "later\n"); }), "later\n");
}

TEST_F(ConsoleTest, LogFileThatCannotBeOpenedIsTold) {
  EXPECT_EQ(console([] { EXPECT_FALSE(open_log_file("/nowhere/run.log")); }),
            "Could not open log file /nowhere/run.log \n");
}

}  // namespace
