// Runs a fuzz target over files, without a fuzzing engine: replay TARGET FILE_OR_DIRECTORY...
// A finding ends the process; the last name told is its file.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "harness.h"

int main(int argc, char** argv) {
  const auto target = argc > 1 ? fuzz::targets().find(argv[1]) : fuzz::targets().end();
  if (target == fuzz::targets().end()) return 2;
  std::set<std::filesystem::path> files;
  for (int i = 2; i < argc; ++i) {
    const auto path = std::filesystem::absolute(argv[i]);
    if (std::filesystem::is_regular_file(path)) files.insert(path);
    if (!std::filesystem::is_directory(path)) continue;
    for (const auto& entry : std::filesystem::directory_iterator(path)) files.insert(entry.path());
  }
  fuzz::be_quiet();
  for (const auto& path : files) {
    std::fprintf(stderr, "%s\n", path.c_str());
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    // A copy of exactly its size, so that a read past the end is noticed.
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    target->second(bytes);
  }
  std::fprintf(stderr, "%zu files replayed\n", files.size());
  return files.empty() ? 1 : 0;
}
