// Descriptors, and files beside their place.
#include "sinks/byte_sink.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "sinks/gzip_sink.h"
#include "sinks/part_file.h"

namespace gzdtool {

namespace {

constexpr mode_t new_file_mode = 0666;

[[noreturn]] void fail(const std::string& what, const std::string& name, int reason) {
  throw WriteError(what + " " + name + ": " + std::strerror(reason));
}

void write_all(int file, std::string_view bytes, const std::string& name) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail("cannot write to", name, errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

// Standard output, or what is written in place.
class DescriptorSink final : public ByteSink {
 public:
  DescriptorSink(int file, std::string name, bool is_ours)
      : file_(file), name_(std::move(name)), is_ours_(is_ours) {}
  ~DescriptorSink() override {
    if (is_ours_ && file_ >= 0) ::close(file_);
  }
  void write(std::string_view bytes) override { write_all(file_, bytes, name_); }
  void close() override {
    const int file = file_;
    if (is_ours_) file_ = -1;
    if (is_ours_ && ::close(file) != 0) fail("cannot write to", name_, errno);
  }

 private:
  int file_;
  std::string name_;
  bool is_ours_;
};

class FileSink final : public ByteSink {
 public:
  explicit FileSink(const std::string& name) : part_(name) {
    file_ = ::open(part_.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, new_file_mode);
    if (file_ < 0) fail("cannot create", part_.path(), errno);
  }
  ~FileSink() override {
    if (file_ >= 0) ::close(file_);
  }
  void write(std::string_view bytes) override { write_all(file_, bytes, part_.path()); }
  void close() override {
    const int file = file_;
    file_ = -1;
    if (::close(file) != 0) fail("cannot write to", part_.path(), errno);
    part_.publish();
  }

 private:
  PartFile part_;
  int file_ = -1;
};

bool is_written_in_place(const std::string& name) {
  struct stat facts {};
  return ::stat(name.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode);
}

std::unique_ptr<ByteSink> open_in_place(const std::string& name) {
  const int file = ::open(name.c_str(), O_WRONLY | O_CLOEXEC);
  if (file < 0) fail("cannot open", name, errno);
  return std::make_unique<DescriptorSink>(file, name, true);
}

std::unique_ptr<ByteSink> open_plain(const std::string& name) {
  if (name == "-") return std::make_unique<DescriptorSink>(STDOUT_FILENO, "standard output", false);
  if (is_written_in_place(name)) return open_in_place(name);
  return std::make_unique<FileSink>(name);
}

}  // namespace

std::unique_ptr<ByteSink> open_byte_sink(const std::string& name) {
  auto plain = open_plain(name);
  return name.ends_with(".gz") ? make_gzip_sink(std::move(plain)) : std::move(plain);
}

void write_file(const std::string& name, std::string_view text) {
  const auto sink = open_byte_sink(name);
  sink->write(text);
  sink->close();
}

void make_folder(const std::string& path) {
  std::error_code failed;
  std::filesystem::create_directories(path, failed);
  if (failed) throw WriteError("cannot make " + path + ": " + failed.message());
}

bool is_terminal(const std::string& name) {
  return name == "-" && ::isatty(STDOUT_FILENO) != 0;
}

}  // namespace gzdtool
