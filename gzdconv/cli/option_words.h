// The names of the options, and words of a command line that are none of them.
#ifndef GZDCONV_OPTION_WORDS_H
#define GZDCONV_OPTION_WORDS_H

#include <set>
#include <string>
#include <string_view>

namespace gzdconv {

// Every option as the documentation writes it.
inline constexpr std::string_view option_words[] = {
    "--help",  "--version", "-avg",     "-buttons", "-c",           "-cl",       "-d",
    "-DEBUG",  "-defres",   "-e",       "-eh",      "-fvel",        "-failsafe", "-fout",
    "-fp",     "-ftime",    "-gazemap", "-geom",    "-g3DScr",      "-g3DEye",   "-hpos",
    "-hr",     "-i",        "-input",   "-l",       "-logmsg",      "-miss",     "-ne",
    "-ned",    "-neye",     "-nflags",  "-nht",     "-nl",          "-nmsg",     "-npa_check",
    "-nr",     "-ns",       "-nst",     "-ntarget", "-ntime_check", "-nv",       "-o",
    "-p",      "-pe",       "-q",       "-r",       "-res",         "-s",        "-SCENECAM",
    "-SEPRES", "-setres",   "-sfhmf",   "-sg",      "-sh",          "-sp",       "-t",
    "-utf8",   "-v",        "-vel",     "-x",       "-y",           "-z",        "-reparse"};

bool is_option_name(std::string_view typed);  // in any case

// The option whose name is most like `typed`.
std::string_view nearest_option(std::string_view typed);

// Tells on standard error of words that name no option, each once.
class UnknownWords {
 public:
  // `meant` is the option that `typed` acts as, "" when it does nothing. The one name that begins
  // with `typed` may be cut short silently.
  void note(std::string_view typed, std::string_view meant);

 private:
  std::set<std::string, std::less<>> told_;
};

}  // namespace gzdconv

#endif
