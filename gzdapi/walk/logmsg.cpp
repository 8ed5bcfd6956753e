// Reading the log:
// 1. Lines before the first sync line are ignored.
// 2. A sync line ("<log time> <word> <order> <tracker time>") sets the clock, and is a message.
// 3. Every other line is a message at its number in front, moved by the newest clock.
// 4. "Quit logger" ends the reading. Only a log that ends so is merged: one without that line was
//    not closed by the experiment.
// Of a message only its time and the place of its text are kept; the text is read when needed.

#include "walk/logmsg.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <system_error>

#include "base/log.h"

namespace gzd {

namespace {

constexpr std::string_view quit_mark = "Quit logger";
constexpr int line_capacity = 4096;
constexpr std::size_t record_text_capacity = 260;

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// Takes fields from the front of a line.
class FieldReader {
 public:
  explicit FieldReader(std::string_view line) : whole_(line), rest_(line) {}

  [[nodiscard]] std::size_t taken() const { return whole_.size() - rest_.size(); }

  // A decimal number; infinities and the like are none. One too small for a double is 0.
  std::optional<double> number() {
    skipBlanks();
    const std::size_t sign = signLength();
    const std::string_view digits = rest_.substr(sign);
    if (digits.empty() || !(is_digit(digits[0]) || digits[0] == '.')) return std::nullopt;
    double value = 0.0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool outOfRange = error == std::errc::result_out_of_range;
    if (outOfRange ? isLarge(digits.substr(0, static_cast<std::size_t>(end - digits.data())))
                   : error != std::errc())
      return std::nullopt;
    if (outOfRange) value = 0.0;
    const bool negative = rest_[0] == '-';
    moveTo(end);
    return negative ? -value : value;
  }

  std::optional<int> integer() {
    skipBlanks();
    const std::size_t plus = rest_.substr(0, 1) == "+" ? 1 : 0;
    int value = 0;
    const auto [end, error] =
        std::from_chars(rest_.data() + plus, rest_.data() + rest_.size(), value);
    if (error != std::errc()) return std::nullopt;
    moveTo(end);
    return value;
  }

  bool word() {
    skipBlanks();
    const std::size_t length = std::min(rest_.find_first_of(blank_characters), rest_.size());
    rest_.remove_prefix(length);
    return length > 0;
  }

 private:
  static constexpr std::string_view blank_characters = " \t\n\v\f\r";

  void skipBlanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(blank_characters), rest_.size()));
  }
  // Whether a number, well formed, is 1 or larger: decided by the place of its first digit above 0.
  static bool isLarge(std::string_view number) {
    const std::size_t exponentMark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view digits = number.substr(0, exponentMark);
    const auto point = static_cast<INT64>(std::min(digits.find('.'), digits.size()));
    const auto first = static_cast<INT64>(digits.find_first_of("123456789"));
    const INT64 magnitude = point - first;
    const std::string exponent(number.substr(std::min(exponentMark + 1, number.size())));
    constexpr INT64 beyond_any_line = 1'000'000;
    return magnitude + std::clamp<INT64>(std::strtoll(exponent.c_str(), nullptr, 10),
                                         -beyond_any_line, beyond_any_line) >
           0;
  }
  [[nodiscard]] std::size_t signLength() const {
    return !rest_.empty() && (rest_[0] == '+' || rest_[0] == '-') ? 1 : 0;
  }
  void moveTo(const char* place) {
    rest_.remove_prefix(static_cast<std::size_t>(place - rest_.data()));
  }

  std::string_view whole_;
  std::string_view rest_;
};

// The line without its end: a newline, with the carriage return before it.
std::string_view without_line_end(std::string_view line) {
  if (line.ends_with('\n')) {
    line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
  }
  return line;
}

UINT64 log_time(double time) {
  if (!(time > 0.0)) return 0;
  return time < static_cast<double>(largest_log_time) ? static_cast<UINT64>(time)
                                                      : largest_log_time;
}

}  // namespace

void MessageLog::setEyeLogFileName(const char* name) {
  if (name == nullptr || *name == '\0') return;
  eyeLogFileName_ = name;
  log_clipped("Log file name %s \n", name);
}

int MessageLog::openEyeLogFile() {
  errno = 0;
  xinfile_ = open_regular_file(eyeLogFileName_.c_str());
  if (!xinfile_) {
    // One that is there is not taken for none when the system runs out of something.
    if (errno == ENOMEM || errno == EMFILE || errno == ENFILE || errno == EIO)
      readError_ = {errno, SystemError::Place::MessageLog};
    return -1;
  }
  const Ending ending = readLines();
  if (ending == Ending::Unreadable) {
    vl_.clear();
    vt_.clear();
    return -1;
  }
  wasRead_ = true;
  if (ending == Ending::Complete) {
    finish();
  } else {
    std::rewind(xinfile_.get());
  }
  numOfLogMsg_ = static_cast<int>(vl_.size());
  return numOfLogMsg_;
}

// The log is complete when the closing line is found.
MessageLog::Ending MessageLog::readLines() {
  char buffer[line_capacity];
  bool synchronised = false;
  for (;;) {
    const INT64 linePos = ftello(xinfile_.get());
    if (std::fgets(buffer, sizeof buffer, xinfile_.get()) == nullptr) {
      if (std::ferror(xinfile_.get()) == 0) return Ending::Incomplete;
      readError_ = {errno, SystemError::Place::MessageLog};
      return Ending::Unreadable;
    }
    const std::string_view line = buffer;
    if (contains(line, sync_mark)) {
      synchronised = true;
      readSyncLine(line, linePos);
    } else if (synchronised) {
      if (contains(line, quit_mark)) return Ending::Complete;
      readMessageLine(line, linePos);
    }
  }
}

void MessageLog::readSyncLine(std::string_view line, INT64 linePos) {
  FieldReader fields(line);
  const auto timeOfLog = fields.number();
  const INT64 textPos = linePos + static_cast<INT64>(fields.taken());
  const bool word = timeOfLog && fields.word();
  const auto order = word ? fields.integer() : std::nullopt;
  const auto timeOfTracker = order ? fields.number() : std::nullopt;
  if (!timeOfTracker) {
    print_notice("ERROR: incorrect TRACKER_TIME format\n");
    return;
  }
  vt_.push_back({static_cast<int>(vl_.size()), *order, *timeOfTracker, *timeOfLog});
  addMessage(std::floor(*timeOfTracker + 0.5), textPos);
}

void MessageLog::readMessageLine(std::string_view line, INT64 linePos) {
  FieldReader fields(line);
  const auto time = fields.number();
  if (!time || vt_.empty()) return;
  const TrackerT& clock = vt_.back();
  addMessage(std::floor(*time - clock.timeDiff + std::trunc(clock.timeStamp) + 0.5),
             linePos + static_cast<INT64>(fields.taken()));
}

void MessageLog::addMessage(double time, INT64 textPos) {
  vl_.push_back({log_time(time), textPos});
}

void MessageLog::finish() {
  loadEYELOG_ = !vt_.empty();
}

const char* MessageLog::getEyeLogMsg(int number) {
  if (number != recordHolds_) {
    recordHolds_ = -1;
    const LogMsg& message = vl_[static_cast<std::size_t>(number)];
    linestring_ = std::to_string(message.time);
    readText(message.filePos);
    fillRecord(message.time);
    recordHolds_ = number;
  }
  return linestring_.c_str();
}

void MessageLog::readText(INT64 textPos) {
  const std::size_t numberLength = linestring_.size();
  char buffer[line_capacity];
  std::clearerr(xinfile_.get());
  const bool found = fseeko(xinfile_.get(), textPos, SEEK_SET) == 0 &&
                     std::fgets(buffer, sizeof buffer, xinfile_.get()) != nullptr;
  const int reason = errno;
  const bool atEnd = std::feof(xinfile_.get()) != 0;
  // The closing line of a complete log stands after every message: one at the end has shrunk.
  if (atEnd ? loadEYELOG_ : !found) {
    throw GZDException("The message log cannot be read")
        .because({atEnd ? ENODATA : reason, SystemError::Place::MessageLog});
  }
  if (found) linestring_ += buffer;
  messageText_ = without_line_end(std::string_view(linestring_).substr(numberLength));
}

void MessageLog::fillRecord(UINT64 time) {
  fDataLog_ = {};
  lstring_buffer_for_log_.clear();
  const std::string_view shown = messageText_.substr(0, record_text_capacity);
  lstring_buffer_for_log_.len = static_cast<INT16>(shown.size());
  std::copy(shown.begin(), shown.end(), lstring_buffer_for_log_.text.begin());
  fDataLog_.fe.type = GZD_MESSAGE;
  fDataLog_.fe.sttime = static_cast<UINT32>(time);
  fDataLog_.fe.message = lstring_buffer_for_log_.asLString();
}

}  // namespace gzd
