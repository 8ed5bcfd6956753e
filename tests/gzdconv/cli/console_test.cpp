// What a terminal is spared.
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

TEST_F(ConsoleTest, ControlCharactersAreMadeVisible) {
  EXPECT_EQ(visible("a\x1b[31m\x7f\t\n", "\n"), "a^[[31m^?^I\n");
  EXPECT_EQ(visible("\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x91\x81"),
            "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x91\x81");
  EXPECT_EQ(visible("\x9b"
                    "31m \xC2\x9b \xC3"),
            "\\x9b31m \\xc2\\x9b \\xc3");
  EXPECT_EQ(visible("\xF8\x88\x80\x80\x80 \xE2\x82"), "\\xf8\\x88\\x80\\x80\\x80 \\xe2\\x82");
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

}  // namespace
