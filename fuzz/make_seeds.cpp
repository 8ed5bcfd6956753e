// make_seeds DIRECTORY: writes the first inputs of every fuzz target, DIRECTORY/<target>/<name>.
// They come from the writer of synthetic recordings; nothing of them is kept in the repository.
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "companions.h"
#include "golden/golden_recordings.h"
#include "session.h"

namespace {

using namespace gzdsynth;

class Seeds {
 public:
  explicit Seeds(std::filesystem::path directory) : directory_(std::move(directory)) {}

  void add(const std::string& target, const std::string& name, const Bytes& bytes) const {
    std::filesystem::create_directories(directory_ / target);
    saveBytes(bytes, directory_ / target / name);
  }

 private:
  std::filesystem::path directory_;
};

Bytes with_tail(Bytes bytes, const Bytes& tail) {
  putBytes(bytes, tail);
  return bytes;
}

Bytes text_bytes(std::string_view text) {
  return {text.begin(), text.end()};
}

// ---- recordings ---------------------------------------------------------------------------------

struct Recording {
  Bytes file;
  std::size_t head;  // bytes before the records
  std::vector<TrialSpan> trials;
};

Recording session(const SessionSettings& settings) {
  GzdWriter writer = sessionWriter(settings);
  std::vector<TrialSpan> trials = Session(settings, writer).run();
  return {writer.bytes(), writer.header().size(), std::move(trials)};
}

SessionSettings short_session(int generation) {
  SessionSettings settings;
  settings.generation = generation;
  settings.rate = 250;
  settings.seconds = 1;
  settings.trials = 2;
  settings.seed = static_cast<std::uint64_t>(generation);
  return settings;
}

std::map<std::string, Recording> sessions() {
  std::map<std::string, Recording> made;
  for (int generation = 1; generation <= 4; ++generation)
    made["generation" + std::to_string(generation)] = session(short_session(generation));
  SessionSettings settings = short_session(4);
  settings.pose = settings.href = settings.zip = true;
  settings.ellipse = 72;
  made["pose"] = session(settings);
  settings = short_session(3);
  settings.target = settings.raw = settings.longMessages = true;
  made["target"] = session(settings);
  settings = short_session(3);
  settings.gap = 30;
  settings.unpairedBlinks = settings.straySamples = settings.repeatTimes = true;
  made["faults"] = session(settings);
  settings = short_session(3);
  settings.rawPacked = settings.raw = true;
  settings.gaze = false;
  made["packed"] = session(settings);
  return made;
}

std::map<std::string, Recording> small_recordings() {
  using Maker = GzdWriter (*)();
  const std::map<std::string, Maker> makers = {
      {"blinks", golden::blinkRepairs},      {"blocks", golden::blockShapes},
      {"buttons", golden::buttonsAndInput},  {"camera", golden::cameraData},
      {"events", golden::eventKinds},        {"geometry", golden::geometry},
      {"halves", golden::halfMilliseconds},  {"mapping", golden::mapping},
      {"messages", golden::messages},        {"odd", golden::oddValues},
      {"pose_events", golden::poseEvents},   {"pose_flags", golden::poseFlags},
      {"positions", golden::positionTypes},  {"status", golden::statusFlags},
      {"target_flags", golden::targetFlags},
  };
  std::map<std::string, Recording> made;
  for (const auto& [name, make] : makers) {
    const GzdWriter writer = make();
    made[name] = {writer.bytes(), writer.header().size(), {}};
  }
  return made;
}

std::map<std::string, Recording> all_recordings() {
  std::map<std::string, Recording> made = small_recordings();
  made.merge(sessions());
  return made;
}

// ---- targets ------------------------------------------------------------------------------------

constexpr std::string_view small_log =
    "10 TRACKER_TIME 1 1000.5\n12.5 first message\n20 -3 second\n30 TRACKER_TIME 2 1020\n"
    "31 third\n40 Quit logger\n";

void add_recordings(const Seeds& seeds) {
  constexpr unsigned consistencies[] = {2, 0, 1, 6, 10, 18, 4};
  std::size_t count = 0;
  for (const auto& [name, recording] : all_recordings()) {
    const unsigned consistency = consistencies[count++ % std::size(consistencies)];
    // Settings, read from the end: consistency, load, velocities, identifiers, seed, log length.
    const auto log = static_cast<unsigned>(count % 3 == 0 ? small_log.size() : 0);
    Bytes tail = log != 0 ? text_bytes(small_log) : Bytes();
    putBytes(tail,
             {static_cast<std::uint8_t>(log), 0, 1, 0, static_cast<std::uint8_t>(count % 6),
              static_cast<std::uint8_t>(count % 2 != 0 ? 63 : 0),
              static_cast<std::uint8_t>(log != 0 ? 7 : 5), static_cast<std::uint8_t>(consistency)});
    seeds.add("open_walk", name, with_tail(recording.file, tail));
    // Settings, read from the end: options, rows of a batch, log length.
    Bytes table_tail = text_bytes(small_log);
    putBytes(table_tail,
             {static_cast<std::uint8_t>(small_log.size()), static_cast<std::uint8_t>(count % 64),
              static_cast<std::uint8_t>(count * 37)});
    seeds.add("tables", name, with_tail(recording.file, table_tail));
    const Bytes records(recording.file.begin() + static_cast<std::ptrdiff_t>(recording.head),
                        recording.file.end());
    for (const unsigned options : {0u, 3u})
      seeds.add("index", name + std::to_string(options),
                with_tail(records, {1, static_cast<std::uint8_t>(options), 25}));
    seeds.add("event_decoder", name, with_tail(records, {2, 1}));
    seeds.add("sample_decoder", name, with_tail(records, {0, 0, 0, 0, 0, 10, 0, 10, 0, 2}));
  }
}

// Records of one kind only, which the decoders' targets run through to the end.
void add_single_kinds(const Seeds& seeds) {
  Bytes samples, events;
  for (unsigned flags = 0x100; flags < 0x10000; flags = flags * 2 + 0x110) {
    SampleRecord sample{.flags = (flags | SMP_LEFT) & 0xFFFF, .time = flags};
    sample.blocks = {headPoseBlock({}), ellipseBlock72({}), headTargetBlock({})};
    sample.skipped = {unknownBlock(9, {1, 2, 3})};
    putSample(samples, sample);
    putSample(samples, sample);
  }
  seeds.add("sample_decoder", "kinds", with_tail(samples, {0, 0, 0, 0, 0, 10, 0, 10, 0, 3}));
  for (unsigned type = 1; type <= 30; ++type) {
    EventRecord record(type);
    record.start(1000).end(1000U << 16).gazeStart(1, 2).hrefEnd(3, 4).rawAverage(5, 6);
    record.flags(0xC5F0).pupilStart(10).pupilEnd(10).resolutionEnd(2, 1).text("-12 text");
    putBytes(events, record.bytes());
  }
  std::array<float, 36> pose{};
  putBytes(events, EventRecord(GZD_END_FIXATION).start(7).end(9).headPose(pose).bytes());
  seeds.add("event_decoder", "kinds", with_tail(events, {2, 1}));
}

void add_inflation(const Seeds& seeds) {
  const Bytes text(5000, 'a');
  for (const int level : {0, 1, 9}) {
    uLongf length = compressBound(text.size());
    Bytes packed(length);
    if (compress2(packed.data(), &length, text.data(), text.size(), level) != Z_OK) std::abort();
    packed.resize(length);
    seeds.add("inflate", "level" + std::to_string(level), with_tail(packed, {0, 0, 1}));
  }
  seeds.add("inflate", "round_trip", with_tail(text, {0, 9, 0}));
}

void add_companions(const Seeds& seeds) {
  const SessionSettings settings = short_session(3);
  const Recording recording = session(settings);
  seeds.add("message_log", "session", text_bytes(messageLogText(recording.trials)));
  seeds.add("message_log", "small", text_bytes(small_log));
  Bytes table = frameTable(recording.trials.front());
  const std::uint32_t time = recording.trials.front().start + 40;
  Bytes tail = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  for (int i = 0; i < 4; ++i) tail.push_back(static_cast<std::uint8_t>(time >> (8 * i)));
  seeds.add("frame_table", "session", with_tail(table, tail));
}

void add_numbers(const Seeds& seeds) {
  Bytes bytes;
  for (unsigned i = 0; i < 200; ++i) putWord(bytes, static_cast<int>(i * 2654435761U >> 16));
  seeds.add("number", "words", bytes);
  bytes.clear();
  for (const float value : {0.0F, -0.05F, 99999.95F, 1e8F, 12345.65F}) {
    putByte(bytes, 20);
    putByte(bytes, 1);
    putInt(bytes, std::bit_cast<std::uint32_t>(value));
    putByte(bytes, 0);
  }
  seeds.add("number", "floats", with_tail(bytes, {0, 0}));
}

void add_items(const Seeds& seeds) {
  for (const unsigned many : {0u, 255u}) {
    Bytes bytes;
    for (unsigned i = 0; i < 240; ++i)
      putBytes(bytes, {5, static_cast<std::uint8_t>(i % 3), static_cast<std::uint8_t>(i * 7)});
    seeds.add("time_order", "items" + std::to_string(many),
              with_tail(bytes, {static_cast<std::uint8_t>(many), 1, 2}));
  }
}

// A command line as the target takes it from the end of its input: how many words, then for each
// its length, marked as a word of its own, and its letters; then the log and the table, each behind
// its length.
Bytes command_tail(const std::vector<std::string>& words, const Bytes& table) {
  constexpr unsigned own_text = 160;  // and the length
  Bytes tail = table;
  putByte(tail, static_cast<unsigned>(table.size()));
  putText(tail, small_log);
  putBytes(tail, {static_cast<std::uint8_t>(small_log.size()), 0});
  for (auto word = words.rbegin(); word != words.rend(); ++word) {
    putText(tail, *word);
    putByte(tail, own_text + static_cast<unsigned>(word->size()));
  }
  putByte(tail, static_cast<unsigned>(words.size()));
  return tail;
}

// A table of so few frames that its length fits into a byte.
Bytes first_frames(Bytes table) {
  constexpr std::size_t head = 8, record = 12, frames = 20;
  table.resize(std::min(table.size(), head + frames * record));
  table[0] = static_cast<std::uint8_t>((table.size() - head) / record);
  table[1] = table[2] = table[3] = 0;
  return table;
}

void add_command_lines(const Seeds& seeds) {
  const std::vector<std::vector<std::string>> lines = {
      {},
      {"-g3dscr", "-geom", "-vel"},
      {"-g3deye", "-cl", "-pe"},
      {"-i", "-ftime", "-res"},
      {"-scenecam", "-sh", "-t"},
      {"-logmsg", "-vel", "-f", "-c"},
      {"-sp", "-input", "-buttons", "-a"},
      {"-sfhmf", "-hr", "-eh", "-fp", "3"},
      {"-failsafe", "-z", "-ntime_check", "-o"},
      {"-defres", "20", "30", "-x", "-v", "-utf8"},
      {"-miss", "none", "-setres", "20", "30"},
      {"-fout", "!V", "-nv", "-nst", "-l"},
      {"-debug", "trace", "-d", "log", "-r"},
  };
  const Recording recording = session(short_session(3));
  const Bytes table = first_frames(frameTable(recording.trials.front()));
  std::size_t count = 0;
  for (const auto& [name, each] : all_recordings())
    for (std::size_t i = 0; i < 3; ++i) {
      const std::vector<std::string>& words = lines[count++ % lines.size()];
      seeds.add("command_line", name + std::to_string(i),
                with_tail(each.file, command_tail(words, table)));
    }
  for (const std::vector<std::string>& words : lines)
    seeds.add("command_line", "line" + std::to_string(count++),
              with_tail(golden::geometry().bytes(), command_tail(words, table)));
  seeds.add("command_line", "frames", with_tail(recording.file, command_tail({"-i"}, table)));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "make_seeds: one argument is needed, a directory\n");
    return 1;
  }
  try {
    const Seeds seeds(argv[1]);
    add_recordings(seeds);
    add_single_kinds(seeds);
    add_inflation(seeds);
    add_companions(seeds);
    add_numbers(seeds);
    add_items(seeds);
    add_command_lines(seeds);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_seeds: %s\n", error.what());
    return 1;
  }
}
