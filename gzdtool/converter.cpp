// Starting, and what a process leaves in files without a name.
#include "converter.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "command.h"
#include "recording_json.h"
#include "recording_options.h"
#include "tables/schema.h"

namespace gzdtool {

namespace {

using gzdtables::UsageError;

constexpr int cannot_run = 127;

// The converter that was named, else the one beside this program, as installed or as built, else of
// the PATH.
std::string converter_path(const ConverterOptions& options) {
  if (!options.program.empty()) return options.program;
  std::error_code none;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", none).parent_path();
  for (const auto& path : {folder / "gzdconv", folder / "../gzdconv/gzdconv"})
    if (std::filesystem::is_regular_file(path, none)) return path;
  return "gzdconv";
}

std::string upper(std::string_view word) {
  std::string result(word);
  for (char& c : result)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return result;
}

// How many words belong to an option. This, and what else is asked of names here, goes by the table
// of gzdconv's option_parser.cpp: whole words and beginnings of words.
int values_of(const std::string& name) {
  if (name == "DEFRES" || name == "SETRES") return 2;
  return name == "SEPRES" || name == "FOUT" || name == "FP" || name.starts_with('M') ? 1 : 0;
}

// Hands each option over, as it is and in capitals without its "-".
template <class Use>
void for_each_option(const std::vector<std::string>& words, Use use) {
  int values = 0;
  for (const std::string& word : words) {
    if (values-- > 0) continue;
    if (!word.starts_with('-'))
      throw UsageError("behind -- stand options of gzdconv only, not '" + word + "'");
    const std::string name = upper(word).substr(1);
    use(word, name);
    values = values_of(name);
  }
}

void refuse_files(const std::string& word, const std::string& name) {
  const bool is_folder = name.starts_with('P') && name != "PE";
  const bool is_file = name.starts_with('D') && name != "DEFRES";
  if (is_folder || is_file)
    throw UsageError("gzdtool convert does not take " + word +
                     (is_folder ? ", but --output-dir" : ": all processes would write that file"));
}

Descriptor file_without_name() {
  Descriptor file(::memfd_create("gzdtool", MFD_CLOEXEC));
  if (file.number() < 0)
    throw std::system_error(errno, std::generic_category(), "cannot keep messages");
  return file;
}

std::string contents_of(const Descriptor& file) {
  std::string text;
  std::array<char, 1 << 14> piece{};
  off_t at = 0;
  ssize_t count = 0;
  while ((count = ::pread(file.number(), piece.data(), piece.size(), at)) > 0) {
    text.append(piece.data(), static_cast<std::size_t>(count));
    at += count;
  }
  return text;
}

// How the converter opens a recording, of all that findings depend on.
gzdtables::Options reading_of(const std::vector<std::string>& words) {
  gzdtables::Options reading;
  for_each_option(words, [&](const std::string& /*word*/, const std::string& name) {
    const bool is_check = name.starts_with('C') && !name.starts_with("CL");
    if (is_check || name.starts_with('Z')) {
      reading.repair = false;
      reading.checks = is_check;
    }
    reading.failsafe |= name == "FAILSAFE";
    reading.message_log |= name == "LOGMSG";
    reading.message_offsets |= name == "O";
  });
  return reading;
}

void write_findings(const Descriptor& file, const std::string& recording,
                    const ConverterOptions& options) {
  const KeptLog log;
  try {
    gzdtables::Recording open(recording, reading_of(options.words));
    const std::string text = json_of(gzdtables::findings_of(open)).dump();
    if (::write(file.number(), text.data(), text.size()) < 0) return;
  } catch (const std::exception&) {
    return;  // the converter tells why
  }
}

std::vector<std::string> arguments_of(const std::string& recording,
                                      const ConverterOptions& options) {
  std::vector<std::string> words{"gzdconv", "-q", "-y"};
  if (!options.directory.empty()) words.insert(words.end(), {"-p", options.directory});
  words.insert(words.end(), options.words.begin(), options.words.end());
  words.push_back(recording.starts_with('-') ? "./" + recording : recording);
  return words;
}

[[noreturn]] void become_converter(const std::string& path, std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  ::execvp(path.c_str(), arguments.data());
  const std::string text =
      "gzdtool: cannot run gzdconv: " + std::string(std::strerror(errno)) + "\n";
  if (::write(STDERR_FILENO, text.data(), text.size()) < 0) ::_exit(cannot_run);
  ::_exit(cannot_run);
}

void run_without_recordings(const ConverterOptions& options, int output) {
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  std::vector<std::string> arguments{"gzdconv", "-q"};
  arguments.insert(arguments.end(), options.words.begin(), options.words.end());
  become_converter(converter_path(options), arguments);
}

}  // namespace

Descriptor::~Descriptor() {
  if (number_ >= 0) ::close(number_);
}

// The converter itself is asked, without a recording.
void check_converter_options(const ConverterOptions& options) {
  for_each_option(options.words, refuse_files);
  if (options.words.empty()) return;
  const Descriptor output = file_without_name();
  const pid_t process = ::fork();
  if (process < 0) throw std::system_error(errno, std::generic_category(), "cannot run gzdconv");
  if (process == 0) run_without_recordings(options, output.number());
  int status = 0;
  ::waitpid(process, &status, 0);
  std::string told = contents_of(output);
  if (told.ends_with('\n')) told.pop_back();
  if (status != 0 || told.find(": no such option") != std::string::npos) throw UsageError(told);
}

std::string text_of_recording(const std::string& recording, const std::string& directory) {
  const std::string stem = without_extension(recording);
  if (directory.empty()) return stem + ".asc";
  return directory + "/" + stem.substr(stem.find_last_of('/') + 1) + ".asc";
}

Conversion::Conversion(const std::string& recording, const ConverterOptions& options)
    : output_(file_without_name()), errors_(file_without_name()), findings_(file_without_name()) {
  const pid_t parent = ::getpid();
  process_ = ::fork();
  if (process_ < 0) throw std::system_error(errno, std::generic_category(), "cannot run gzdconv");
  if (process_ != 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (::getppid() != parent) ::_exit(cannot_run);
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
  const int nothing = ::open("/dev/null", O_RDONLY);
  ::dup2(nothing, STDIN_FILENO);
  ::dup2(output_.number(), STDOUT_FILENO);
  ::dup2(errors_.number(), STDERR_FILENO);
  if (options.tells_findings) write_findings(findings_, recording, options);
  become_converter(converter_path(options), arguments_of(recording, options));
}

ConverterResult Conversion::result(int wait_status) const {
  constexpr int of_signals = 128;
  ConverterResult result;
  result.status =
      WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : of_signals + WTERMSIG(wait_status);
  result.messages = contents_of(errors_);
  if (result.status != 0) result.messages += contents_of(output_);
  result.findings = contents_of(findings_);
  return result;
}

}  // namespace gzdtool
