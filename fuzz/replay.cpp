// Runs a fuzz target over files, without a fuzzing engine: replay_<target> FILE_OR_DIRECTORY...
// A finding ends the process; the last name told is its file.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

using Path = std::filesystem::path;

std::vector<Path> files_in(const Path& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<Path> files;
  for (const auto& entry : std::filesystem::directory_iterator(path))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const Path& path) {
  std::fprintf(stderr, "%s\n", path.c_str());
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  // A copy of exactly its size, so that a read behind the end is noticed.
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<Path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::exists(argv[i])) continue;
    for (const Path& file : files_in(std::filesystem::absolute(argv[i]))) files.push_back(file);
  }
  LLVMFuzzerInitialize(&argc, &argv);
  for (const Path& file : files) replay(file);
  std::fprintf(stderr, "%zu files replayed\n", files.size());
  return files.empty() ? 1 : 0;
}
