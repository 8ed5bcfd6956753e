// make_seeds DESCRIPTIONS DIRECTORY: writes the first inputs of every fuzz target,
// DIRECTORY/<target>/<name>, made of the small recordings described in DESCRIPTIONS, of synthetic
// sessions and of what belongs to them; nothing of them is kept in the repository.
#include <zlib.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "companions.h"
#include "recording_text.h"
#include "session.h"

namespace {

using namespace gzdsynth;

std::filesystem::path seeds;

// `tail` is what the target takes off the end of its input.
void add(const std::string& target, const std::string& name, Bytes bytes, const Bytes& tail = {}) {
  put_bytes(bytes, tail);
  std::filesystem::create_directories(seeds / target);
  save_bytes(bytes, seeds / target / name);
}

Bytes bytes_of(std::initializer_list<unsigned> values) {
  Bytes bytes;
  for (const unsigned value : values) put_byte(bytes, value);
  return bytes;
}

Bytes bytes_of(std::string_view text) {
  return {text.begin(), text.end()};
}

Bytes any_bytes(unsigned count, unsigned seed) {
  Bytes bytes;
  for (unsigned i = 0; i < count; ++i) put_byte(bytes, (i + 99 * seed) * 2654435761U >> 20);
  return bytes;
}

struct Recording {
  Bytes file;
  std::size_t head;  // bytes before the records
};

SessionSettings session(int generation) {
  SessionSettings settings;
  settings.generation = generation;
  settings.rate = 250;
  settings.seconds = 1;
  settings.trials = 2;
  settings.seed = static_cast<std::uint64_t>(generation);
  return settings;
}

std::map<std::string, Recording> recordings(const std::filesystem::path& descriptions) {
  std::map<std::string, Recording> made;
  const auto keep = [&made](const std::string& name, const GzdWriter& writer) {
    made[name] = {writer.bytes(), writer.header().size()};
  };
  for (const auto& entry : std::filesystem::directory_iterator(descriptions))
    keep(entry.path().stem(), golden::recording_of_file(entry.path()));
  std::map<std::string, SessionSettings> sessions;
  for (const int generation : {1, 2, 3, 4})
    sessions["generation" + std::to_string(generation)] = session(generation);
  SessionSettings& pose = sessions["pose"] = session(4);
  pose.pose = pose.href = pose.zip = true;
  pose.ellipse = 72;
  SessionSettings& target = sessions["target"] = session(3);
  target.target = target.raw = target.longMessages = true;
  SessionSettings& faults = sessions["faults"] = session(3);
  faults.gap = 30;
  faults.unpairedBlinks = faults.straySamples = faults.repeatTimes = true;
  SessionSettings& packed = sessions["packed"] = session(3);
  packed.rawPacked = packed.raw = true;
  packed.gaze = false;
  for (const auto& [name, settings] : sessions) {
    GzdWriter writer = session_writer(settings);
    Session(settings, writer).run();
    keep("session_" + name, writer);
  }
  return made;
}

constexpr std::string_view small_log =
    "10 TRACKER_TIME 1 1000.5\n12.5 first message\n20 -3 second\n30 TRACKER_TIME 2 1020\n"
    "31 third\n40 Quit logger\n";

// What follows the recording, or the choices that stand for one, in inputs of two targets.
Bytes index_tail(unsigned options, unsigned how) {
  Bytes tail = bytes_of({how});
  put_bytes(tail, any_bytes(16, options));
  put_bytes(tail, bytes_of({1, 1, options}));
  return tail;
}

Bytes walk_tail(unsigned number, unsigned how) {
  constexpr unsigned consistencies[] = {2, 0, 1, 6, 10, 18, 4};
  Bytes tail = bytes_of({how});
  put_bytes(tail, any_bytes(64, number));
  const bool merges = number % 3 == 0;
  if (merges) {
    put_text(tail, small_log);
    put_byte(tail, static_cast<unsigned>(small_log.size()));
  }
  put_bytes(tail, bytes_of({number % 6, number % 64, merges ? 7U : 5U,
                            consistencies[number % std::size(consistencies)]}));
  return tail;
}

// How many words, then for each its length, marked as a word of its own, and its letters; then the
// log and the table, each after its length.
Bytes command_tail(const std::vector<std::string>& words, const Bytes& table, unsigned how) {
  constexpr unsigned own_text = 160;  // and the length
  Bytes tail = bytes_of({how});
  put_bytes(tail, table);
  put_byte(tail, static_cast<unsigned>(table.size()));
  put_text(tail, small_log);
  put_bytes(tail, bytes_of({static_cast<unsigned>(small_log.size()), 0}));
  for (auto word = words.rbegin(); word != words.rend(); ++word) {
    put_text(tail, *word);
    put_byte(tail, own_text + static_cast<unsigned>(word->size()));
  }
  put_byte(tail, static_cast<unsigned>(words.size()));
  return tail;
}

void add_companions(Bytes& table) {
  const SessionSettings settings = session(3);
  GzdWriter writer = session_writer(settings);
  const std::vector<TrialSpan> trials = Session(settings, writer).run();
  add("message_log", "session", bytes_of(message_log_text(trials)));
  add("message_log", "small", bytes_of(small_log));
  Bytes tail = bytes_of({1});
  put_int(tail, trials.front().start + 40);
  table = frame_table_bytes(trials.front());
  add("frame_table", "session", table, tail);
  // Of so few frames that its length fits into a byte.
  constexpr std::size_t head = 8, record = 12, frames = 20;
  table.resize(std::min(table.size(), head + frames * record));
  table[0] = static_cast<std::uint8_t>((table.size() - head) / record);
  table[1] = table[2] = table[3] = 0;
}

void add_recordings(const std::map<std::string, Recording>& all, const Bytes& table) {
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
  unsigned number = 0;
  for (const auto& [name, recording] : all) {
    const auto& file = recording.file;
    ++number;
    add("open_walk", name, file, walk_tail(number, 0));
    add("open_walk", name + "_chosen", any_bytes(400, number), walk_tail(number, 1 + 6 * number));
    Bytes table_tail = bytes_of({0});
    put_text(table_tail, small_log);
    put_bytes(table_tail, bytes_of({static_cast<unsigned>(small_log.size()), number, 37 * number}));
    add("tables", name, file, table_tail);
    add("index", name, file, index_tail(number % 16, 0));
    add("index", name + "_chosen", any_bytes(400, number), index_tail(number % 4, 1));
    for (const unsigned i : {0U, 5U, 9U})
      add("command_line", name + std::to_string(i), file,
          command_tail(lines[(number + i) % lines.size()], table, 0));
    add("records", name, {file.begin() + static_cast<std::ptrdiff_t>(recording.head), file.end()},
        bytes_of({0, 0, 0, 10, 0, 10, 3, 1}));
  }
  for (const std::vector<std::string>& words : lines)
    add("command_line", "line" + std::to_string(++number), all.at("geometry").file,
        command_tail(words, table, 0));
}

void add_others() {
  const Bytes text(5000, 'a');
  for (const int level : {0, 1, 9}) {
    uLongf length = compressBound(text.size());
    Bytes packed(length);
    if (compress2(packed.data(), &length, text.data(), text.size(), level) != Z_OK) std::abort();
    packed.resize(length);
    add("inflate", "level" + std::to_string(level), packed, bytes_of({0, 0, 1}));
  }
  add("inflate", "round_trip", text, bytes_of({0, 9, 0}));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::invalid_argument("two directories: DESCRIPTIONS DIRECTORY");
    seeds = argv[2];
    Bytes table;
    add_companions(table);
    add_recordings(recordings(argv[1]), table);
    add_others();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "make_seeds: %s\n", error.what());
    return 1;
  }
}
