// Any command line over any recording, message log and frame table, in a scratch directory.
//
// Asserts: the run ends with status 0 or 1; no descriptor stays open; a run that ends with 0 leaves
// whole lines in its ASC file; the same run, with what an earlier one left in force, writes the
// same text again.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "harness.h"
#include "process.h"

using namespace gzdconv;

namespace {

constexpr std::uint64_t largest_filling = 20000;
constexpr std::size_t most_words = 12;
constexpr std::size_t longest_word = 60;

// From here on a byte stands for a word of its own, of as many letters as its low four bits say.
constexpr std::size_t own_word = 160;

constexpr const char* option_words =
    "-a -b -cl -c -defres -eh -e -ftime -failsafe -fout -fp -f -geom -gazemap -g3dscr -g3deye -hr "
    "-h -input -i -logmsg -l -miss -ned -neye -ne -nflags -nht -nl -nmsg -npa_check -nr -nst -ns "
    "-ntime_check -nt -nv -o -pe -q -reparse -res -r -sfhmf -scenecam -setres -sepres -sg -sh -sp "
    "-s -t -utf8 -v -vel -x -y -z -hpos -p -d -debug --help --version rec.gzd rec other out 30 "
    "12.5 "
    "700,760,-200,150,200,-150,0,0,1023,767 !V MSG no.gzd -";

std::vector<std::string> known_words() {
  std::istringstream words(option_words);
  return {std::istream_iterator<std::string>(words), {}};
}

class Scratch {
 public:
  Scratch() {
    path_ = (std::filesystem::temp_directory_path() / "gzd-fuzz-XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) std::abort();
    std::filesystem::current_path(path_);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch() {
    std::filesystem::current_path("/");
    std::filesystem::remove_all(path_);
  }
  void empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      std::filesystem::remove_all(entry);
  }

 private:
  std::string path_;
};

void write_file(const char* name, fuzz::Input bytes) {
  std::ofstream(name, std::ios::binary) << fuzz::text_of(bytes);
}

std::ptrdiff_t count_descriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

// Words cannot leave the scratch directory, and are too short to outgrow a log message.
std::string harmless(std::string_view word) {
  std::string text(word.substr(0, longest_word));
  for (char& c : text)
    if (c == '/' || c == '\\' || c == '\0') c = '_';
  return text;
}

std::vector<std::string> words_from(fuzz::Tail& tail) {
  static const std::vector<std::string> known = known_words();
  std::vector<std::string> words = {"gzdconv"};
  for (std::size_t count = tail.byte() % most_words; count > 0; --count) {
    const std::size_t choice = tail.byte();
    const bool listed = choice < own_word;
    words.push_back(listed ? known[choice % known.size()]
                           : harmless(fuzz::text_of(tail.block(choice % 16))));
  }
  words.insert(words.end(), {"rec.gzd", "-y"});
  return words;
}

bool names_output(const std::vector<std::string>& words) {
  return std::any_of(words.begin() + 1, words.end(), [](const std::string& word) {
    return word.size() > 1 && word[0] == '-' && std::string("dDpP").find(word[1]) < 4;
  });
}

int run_words(std::vector<std::string> words) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  std::rewind(stdin);
  try {
    return run(static_cast<int>(words.size()), argv.data());
  } catch (const std::exception&) {
    return 1;  // as the program does
  }
}

std::string content_of(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The text of one more run, without what counts up from file to file, and the line that tells when
// it was made.
std::string text_of_run(const std::vector<std::string>& words) {
  FUZZ_REQUIRE(run_words(words) == 0);
  std::istringstream lines(content_of("rec.asc"));
  std::string lasting;
  for (std::string line; std::getline(lines, line);) {
    const bool passing = line.find("** CONVERTED FROM ") != std::string::npos ||
                         line.starts_with("new osp_report_geom_config ");
    if (!passing) lasting += line + '\n';
  }
  return lasting;
}

void check_run(const std::vector<std::string>& words) {
  const std::ptrdiff_t descriptors = count_descriptors();
  const int status = run_words(words);
  FUZZ_REQUIRE(status == 0 || status == 1);
  FUZZ_REQUIRE(count_descriptors() == descriptors);
  if (status != 0 || names_output(words) || !std::filesystem::exists("rec.asc")) return;
  const std::string text = content_of("rec.asc");
  FUZZ_REQUIRE(text.empty() || text.ends_with('\n') || text == "\xEF\xBB\xBF");
  // Geometry and display mapping last from file to file: these two runs begin with the same.
  const std::string second = text_of_run(words);
  FUZZ_REQUIRE(text_of_run(words) == second);
}

}  // namespace

FUZZ_TARGET(command_line) {
  static FILE* const noAnswers = std::freopen("/dev/null", "r", stdin);
  static const Scratch scratch;
  fuzz::Tail tail(input);
  const std::vector<std::string> words = words_from(tail);
  const fuzz::Input log = tail.block(tail.word() % 1024);
  const fuzz::Input table = tail.block(tail.byte());
  scratch.empty();
  write_file("rec.gzd", fuzz::recording_from(tail));
  if (noAnswers == nullptr || fuzz::is_too_large("rec.gzd", largest_filling)) return;
  write_file("tq_messages.log", log);
  write_file("rec0.ett", table);
  check_run(words);
}
