// Parts, and what signals do to them.
#include "sinks/part_file.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "sinks/byte_sink.h"

namespace gzdtool {

namespace {

std::atomic<const char*> open_part = nullptr;

extern "C" void remove_part_and_end(int signal) {
  const char* const part = open_part.load();
  if (part != nullptr) ::unlink(part);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void watch(int signal) {
  const auto before = std::signal(signal, remove_part_and_end);
  if (before == SIG_IGN) std::signal(signal, SIG_IGN);
}

}  // namespace

PartFile::PartFile(std::string name) : name_(std::move(name)), part_(name_ + ".part") {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) watch(signal);
  open_part = part_.c_str();
}

PartFile::~PartFile() {
  if (!is_published_) ::unlink(part_.c_str());
  open_part = nullptr;
}

void PartFile::publish() {
  if (std::rename(part_.c_str(), name_.c_str()) != 0)
    throw WriteError("cannot name " + name_ + ": " + std::strerror(errno));
  is_published_ = true;
}

}  // namespace gzdtool
