// What tests of whole recordings say: make bytes, open them, walk them, look at the log.
#ifndef TESTS_SUPPORT_RECORDING_FIXTURE_H
#define TESTS_SUPPORT_RECORDING_FIXTURE_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "GzdWriter.h"
#include "gzd.h"

// Collects what goes through the log while it lives.
class CapturedLog {
 public:
  CapturedLog() {
    collected().clear();
    gzd_set_log_function(reinterpret_cast<void*>(&receive));
  }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;
  ~CapturedLog() { gzd_set_log_function(nullptr); }

  // Everything since the start or the last call.
  std::string take() { return std::exchange(collected(), std::string()); }

 private:
  static void receive(const char* message) { collected() += message; }
  static std::string& collected() {
    static std::string text;
    return text;
  }
};

// Everything that `action` writes to standard output.
template <class Action>
std::string standard_output_of(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

// An empty directory that goes away with its content.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "gzdapi-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch directory");
    directory = pattern;
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory() { std::filesystem::remove_all(directory); }

  [[nodiscard]] std::string file(const std::string& name) const { return directory / name; }
  [[nodiscard]] std::string save(const std::string& name, const gzdsynth::Bytes& bytes) const {
    std::string path = file(name);
    FILE* out = std::fopen(path.c_str(), "wb");
    if (out == nullptr) throw std::runtime_error("cannot write " + path);
    if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), out);
    std::fclose(out);
    return path;
  }

 private:
  std::filesystem::path directory;
};

// A recording in a scratch file, open while this lives. A failed open leaves a null handle.
class OpenRecording {
 public:
  explicit OpenRecording(const gzdsynth::Bytes& bytes, int consistency = GZD_CONSISTENCY_NONE,
                         int loadEvents = GZD_LOAD_EVENTS, int loadSamples = 1) {
    const std::string path = scratch.save("recording.gzd", bytes);
    file = gzd_open_file(path.c_str(), consistency, loadEvents, loadSamples, &result);
  }
  explicit OpenRecording(const gzdsynth::GzdWriter& writer, int consistency = GZD_CONSISTENCY_NONE,
                         int loadEvents = GZD_LOAD_EVENTS, int loadSamples = 1)
      : OpenRecording(writer.bytes(), consistency, loadEvents, loadSamples) {}
  OpenRecording(const OpenRecording&) = delete;
  OpenRecording& operator=(const OpenRecording&) = delete;
  ~OpenRecording() { gzd_close_file(file); }

  operator GZDFILE*() const { return file; }

  // Steps on and fetches; null at the end or when the element cannot be fetched.
  const ALLF_DATA* next() {
    code = gzd_get_next_data(file);
    return code == GZD_END_OF_DATA ? nullptr : gzd_get_float_data(file);
  }
  // Steps to the next element of a kind; null when there is none.
  const ALLF_DATA* nextOf(int wanted) {
    do {
      code = gzd_get_next_data(file);
    } while (code != wanted && code != GZD_END_OF_DATA);
    return code == wanted ? gzd_get_float_data(file) : nullptr;
  }
  std::vector<FSAMPLE> samples() {
    std::vector<FSAMPLE> all;
    while (const ALLF_DATA* record = nextOf(GZD_SAMPLE)) all.push_back(record->fs);
    return all;
  }

  // The rest of the walk in one line: "[1000" and "]2000" are boundaries, "s1001" samples ("+"
  // half a millisecond later), "24:1002" events, "?" what cannot be fetched.
  std::string describe() {
    std::string line;
    while ((code = gzd_get_next_data(file)) != GZD_END_OF_DATA) {
      if (!line.empty()) line += ' ';
      const ALLF_DATA* record = gzd_get_float_data(file);
      line += record != nullptr ? describe(*record) : "?" + std::to_string(code);
    }
    return line;
  }

  int code = 0;     // of the element last stepped to
  int result = 99;  // of the open

 private:
  [[nodiscard]] std::string describe(const ALLF_DATA& record) const {
    if (code == GZD_RECORDING)
      return (record.rec.state != 0 ? "[" : "]") + std::to_string(record.rec.time);
    if (code == GZD_SAMPLE) {
      return "s" + std::to_string(record.fs.time) + ((record.fs.flags & SMP_HALF_MS) ? "+" : "");
    }
    return std::to_string(code) + ":" + std::to_string(record.fe.sttime);
  }

  ScratchDirectory scratch;
  GZDFILE* file = nullptr;
};

#endif
