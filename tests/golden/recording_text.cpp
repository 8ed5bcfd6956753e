// The words of a line, and what each writes.
#include "recording_text.h"

#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/random_records.h"

namespace golden {

using namespace gzdsynth;

namespace {

using Values = std::vector<double>;

[[noreturn]] void refuse(const std::string& word) {
  throw std::runtime_error("not understood: " + word);
}

double number_of(const std::string& word) {
  char* end = nullptr;
  const double value = std::strtod(word.c_str(), &end);
  if (word.empty() || *end != '\0') refuse(word);
  return value;
}

int int_of(double value) {
  return static_cast<int>(value);
}

std::uint32_t time_of(const std::string& word) {
  return static_cast<std::uint32_t>(number_of(word));
}

Values values_of(const std::string& list) {
  Values values;
  for (std::size_t from = 0; from <= list.size();) {
    const std::size_t comma = std::min(list.find(',', from), list.size());
    values.push_back(number_of(list.substr(from, comma - from)));
    from = comma + 1;
  }
  return values;
}

unsigned flags_of(const std::string& letters) {
  if (letters.find_first_of("-0123456789") == 0) {
    return static_cast<unsigned>(static_cast<long long>(number_of(letters)));
  }
  unsigned flags = 0;
  for (const char letter : letters) {
    const std::size_t place = std::string("LRtphgrasibdxko").find(letter);
    if (place == std::string::npos) refuse(letters);
    flags |= 0x8000U >> place;
  }
  return flags;
}

Bytes bytes_of_hex(const std::string& digits) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
    put_byte(bytes, static_cast<unsigned>(std::stoul(digits.substr(i, 2), nullptr, 16)));
  return bytes;
}

// ---- a line and its words -----------------------------------------------------------------------

struct Line {
  std::vector<std::string> plain;
  std::vector<std::pair<std::string, std::string>> named;
  std::string text;
  bool hasText = false;
};

// The text whose opening quote is at `place`, which moves after its closing quote.
std::string take_text(const std::string& line, std::size_t& place) {
  std::string text;
  while (line.at(++place) != '"') {
    if (line[place] != '\\') {
      text.push_back(line[place]);
      continue;
    }
    const char kind = line.at(++place);
    if (kind == 'x') {
      text.push_back(static_cast<char>(std::stoi(line.substr(place + 1, 2), nullptr, 16)));
      place += 2;
    } else if (kind == '(') {
      const std::size_t close = line.find(')', place);
      text.append(std::stoul(line.substr(place + 1)), line.at(close - 1));
      place = close;
    } else {
      text.push_back(kind == 'n' ? '\n' : kind == 't' ? '\t' : kind);
    }
  }
  ++place;
  return text;
}

Line split(const std::string& line) {
  Line words;
  for (std::size_t place = 0; (place = line.find_first_not_of(' ', place)) != std::string::npos;) {
    if (line[place] == '#') break;
    if (line[place] == '"') {
      words.text = take_text(line, place);
      words.hasText = true;
      continue;
    }
    const std::size_t end = std::min(line.find(' ', place), line.size());
    const std::string word = line.substr(place, end - place);
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos)
      words.plain.push_back(word);
    else
      words.named.emplace_back(word.substr(0, equals), word.substr(equals + 1));
    place = end;
  }
  return words;
}

// ---- records ------------------------------------------------------------------------------------

BlockStart block_of(const Line& line) {
  BlockStart block{.time = time_of(line.plain.at(1))};
  const std::map<std::string, int*> fields = {
      {"gaze", &block.gaze_prescale},  {"velocity", &block.velocityPrescale},
      {"divisor", &block.divisor},     {"eye", &block.eye},
      {"link", &block.linkFilter},     {"filter", &block.fileFilter},
      {"mode", &block.recordingMode},  {"ptype", &block.pupilType},
      {"sflags", &block.sample_flags}, {"eflags", &block.event_flags}};
  for (const auto& [key, value] : line.named) {
    if (key == "flags")
      block.sample_flags = block.event_flags = static_cast<int>(flags_of(value));
    else if (key == "rate")
      block.rate = number_of(value);
    else if (key == "by")
      block.positionType = static_cast<unsigned>(number_of(value));
    else if (key == "pupil")
      block.pupilPrescale = int_of(number_of(value));
    else if (key == "head")
      block.headPrescale = int_of(number_of(value));
    else if (key == "eyes")
      block.eventEyes = int_of(number_of(value));
    else
      *fields.at(key) = static_cast<int>(flags_of(value));
  }
  return block;
}

unsigned type_of(const std::string& word) {
  static const std::map<std::string, unsigned> names = {{"SBLINK", 3}, {"EBLINK", 4}, {"SSACC", 5},
                                                        {"ESACC", 6},  {"SFIX", 7},   {"EFIX", 8}};
  const auto found = names.find(word);
  return found != names.end() ? found->second : static_cast<unsigned>(number_of(word));
}

void add_field(EventRecord& record, const std::string& key, const std::string& value) {
  if (key == "hex") {
    record.raw(bytes_of_hex(value));
  } else if (key == "start") {
    record.start(time_of(value));
  } else if (key == "end") {
    record.end(time_of(value));
  } else if (key == "pose") {
    std::array<float, 36> pose;
    const Values values = values_of(value);
    for (std::size_t i = 0; i < pose.size(); ++i) pose[i] = static_cast<float>(values.at(i));
    record.head_pose(pose);
  } else {
    const auto code = static_cast<unsigned>(number_of(key));
    const Values values = values_of(value);
    if (values.size() > 1)
      record.pair(code, int_of(values[0]), int_of(values[1]));
    else
      record.word(code, int_of(values[0]));
  }
}

EventRecord event_of(unsigned type, unsigned parsedBy, const Line& line) {
  int eye = GZD_LEFT_EYE;
  for (const auto& [key, value] : line.named) {
    if (key == "eye") eye = int_of(number_of(value));
    if (key == "by") parsedBy = static_cast<unsigned>(number_of(value));
  }
  EventRecord record(type, eye, parsedBy);
  int length = static_cast<int>(line.text.size());
  for (const auto& [key, value] : line.named) {
    if (key == "len")
      length = int_of(number_of(value));
    else if (key != "eye" && key != "by")
      add_field(record, key, value);
  }
  if (line.hasText) record.text(line.text, length);
  if (line.plain.back() == "unclosed") record.unclosed();
  return record;
}

// A block of a sample as length, kind and bytes; one of floats or of words knows its own length.
SampleBlock block_of_sample(const std::string& key, const Values& values) {
  Bytes payload;
  if (key == "target") {
    for (const double value : values) put_word(payload, int_of(value));
    return unknown_block(1, payload);
  }
  if (key == "odd" || key == "skip") {
    for (std::size_t i = 2; i < values.size(); ++i)
      put_byte(payload, static_cast<unsigned>(values[i]));
    return {static_cast<unsigned>(values[0]), static_cast<unsigned>(values.at(1)), payload};
  }
  constexpr std::size_t markerFlags = 12;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (key == "pose" && i == markerFlags)
      put_int(payload, static_cast<std::uint32_t>(values[i]));
    else
      put_float(payload, static_cast<float>(values[i]));
  }
  return unknown_block(key == "pose" ? 2 : 3, payload);
}

// ---- the recording ------------------------------------------------------------------------------

class Recorder {
 public:
  void add(const Line& line) {
    const auto verb = verbs_.find(line.plain.at(0));
    if (verb == verbs_.end()) refuse(line.plain[0]);
    verb->second(line);
  }

  GzdWriter writer{2};

 private:
  void magic(const Line& line) {
    static const std::map<std::string, Magic> kinds = {{"falc", Magic::Falc},
                                                       {"osp", Magic::Osp},
                                                       {"falczip", Magic::FalcZip},
                                                       {"ospzip", Magic::OspZip}};
    if (line.hasText)
      writer.magic_text(line.text);
    else
      writer.magic(kinds.at(line.plain.at(1)));
  }

  void set(const std::string& key, const std::string& value) {
    const std::map<std::string, std::array<int, 2>*> pairs = {
        {"px", &sample_.px}, {"py", &sample_.py}, {"hx", &sample_.hx}, {"hy", &sample_.hy},
        {"gx", &sample_.gx}, {"gy", &sample_.gy}, {"pa", &sample_.pa}};
    const std::map<std::string, int*> words = {{"rx", &sample_.rx},
                                               {"ry", &sample_.ry},
                                               {"status", &sample_.status},
                                               {"input", &sample_.input},
                                               {"buttons", &sample_.buttons}};
    if (key == "flags") {
      sample_.flags = flags_of(value);
      return;
    }
    const Values values = values_of(value);
    if (const auto pair = pairs.find(key); pair != pairs.end()) {
      *pair->second = {int_of(values[0]), int_of(values.back())};
    } else if (const auto word = words.find(key); word != words.end()) {
      *word->second = int_of(values[0]);
    } else if (key == "head") {
      sample_.headType = static_cast<unsigned>(values[0]);
      for (std::size_t i = 1; i < values.size(); ++i)
        sample_.headData.at(i - 1) = int_of(values[i]);
    } else {
      (key == "skip" ? sample_.skipped : sample_.blocks).push_back(block_of_sample(key, values));
    }
  }

  void sample(const Line& line) {
    int count = 1, dx = 0, dy = 0;
    if (line.plain.size() > 2) count = int_of(number_of(line.plain[2].substr(1)));
    sample_.blocks.clear();
    sample_.skipped.clear();
    for (const auto& [key, value] : line.named)
      if (key == "dx" || key == "dy")
        (key == "dx" ? dx : dy) = int_of(number_of(value));
      else
        set(key, value);
    for (const std::string& when = line.plain.at(1); count > 0; --count) {
      const bool stepped = when[0] == '~', relative = stepped || when[0] == '+';
      const std::uint32_t number = time_of(relative ? when.substr(1) : when);
      sample_.time = relative ? sample_.time + number : number;
      sample_.step = number;
      sample_.flags &= ~unsigned{SMP_TIME_ABSOLUTE};
      if (!stepped) sample_.flags |= SMP_TIME_ABSOLUTE;
      writer.sample(sample_);
      for (const std::size_t eye : {0U, 1U}) {
        sample_.gx[eye] += dx;
        sample_.gy[eye] += dy;
      }
    }
  }

  void timed(unsigned type, unsigned code, const Line& line) {
    const int value = int_of(number_of(line.plain.at(2)));
    writer.event(event_of(type, 0, line).start(time_of(line.plain.at(1))).word(code, value));
  }

  SampleRecord sample_;
  const std::map<std::string, std::function<void(const Line&)>> verbs_ = {
      {"tracker", [this](auto& line) { writer = GzdWriter(int_of(number_of(line.plain.at(1)))); }},
      {"magic", [this](auto& line) { magic(line); }},
      {"preamble", [this](auto& line) { writer.preamble_line(line.text); }},
      {"endp", [this](auto& line) { writer.endp_text(line.text); }},
      {"noend", [this](auto&) { writer.end_tag(false); }},
      {"block", [this](auto& line) { writer.start_block(block_of(line)); }},
      {"events", [this](auto& line) { writer.start_events(block_of(line)); }},
      {"samples", [this](auto& line) { writer.start_samples(block_of(line)); }},
      {"end", [this](auto& line) { writer.end_block(time_of(line.plain.at(1))); }},
      {"endevents", [this](auto& line) { writer.end_events(time_of(line.plain.at(1))); }},
      {"endsamples", [this](auto& line) { writer.end_samples(time_of(line.plain.at(1))); }},
      {"sample", [this](auto& line) { sample(line); }},
      {"event",
       [this](auto& line) {
         writer.event(event_of(type_of(line.plain.at(1)), GZD_POSITION_GAZE, line));
       }},
      {"msg", [this](auto& line) { writer.message(time_of(line.plain.at(1)), line.text); }},
      {"long",
       [this](auto& line) {
         writer.long_message(time_of(line.plain.at(1)), int_of(number_of(line.plain.at(2))),
                             line.text);
       }},
      {"button", [this](auto& line) { timed(GZD_BUTTON, FIELD_BUTTONS, line); }},
      {"input", [this](auto& line) { timed(GZD_INPUT, FIELD_INPUT, line); }},
      {"random",
       [this](auto& line) {
         std::mt19937 numbers(static_cast<unsigned>(number_of(line.plain.at(1))));
         RandomRecords records(writer, [&](std::size_t below) { return numbers() % below; });
         for (double count = number_of(line.plain.at(2)); count > 0; --count) records.add();
       }},
      {"hex", [this](auto& line) { writer.raw(bytes_of_hex(line.plain.at(1))); }},
  };
};

}  // namespace

GzdWriter recording_of(std::istream& text) {
  Recorder recorder;
  int number = 0;
  for (std::string line; std::getline(text, line);) {
    ++number;
    try {
      const Line words = split(line);
      if (!words.plain.empty()) recorder.add(words);
    } catch (const std::exception& error) {
      throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
    }
  }
  return std::move(recorder.writer);
}

GzdWriter recording_of_file(const std::string& path) {
  std::ifstream text(path);
  if (!text) throw std::runtime_error("cannot read " + path);
  return recording_of(text);
}

GzdWriter small_recording(const std::string& name) {
  return recording_of_file(GOLDEN_RECORDINGS "/" + name + ".txt");
}

}  // namespace golden
