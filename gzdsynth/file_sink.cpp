// Pours bytes into a file, through zlib when asked to.
#include "file_sink.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace gzdsynth {

namespace {
constexpr std::size_t zip_buffer = 1 << 16;
}

FileSink::FileSink(std::string path) : path_(std::move(path)), file_(nullptr) {
  file_ = std::fopen(path_.c_str(), "wb");
  if (file_ == nullptr) fail("cannot create");
}

FileSink::~FileSink() {
  if (zip_) deflateEnd(zip_.get());
  if (file_ != nullptr) std::fclose(file_);
}

void FileSink::fail(const std::string& what) const {
  throw std::runtime_error(what + " " + path_ + ": " + std::strerror(errno));
}

void FileSink::store(const std::uint8_t* data, std::size_t size) {
  if (std::fwrite(data, 1, size, file_) != size) fail("cannot write to");
}

void FileSink::write(const Bytes& bytes) {
  if (zip_) {
    deflate_input(bytes, Z_NO_FLUSH);
  } else {
    store(bytes.data(), bytes.size());
  }
}

void FileSink::begin_compression() {
  zipped_.resize(zip_buffer);
  auto stream = std::make_unique<z_stream>();
  if (deflateInit(stream.get(), Z_DEFAULT_COMPRESSION) != Z_OK)
    throw std::runtime_error("cannot start compressing " + path_);
  zip_ = std::move(stream);
}

void FileSink::deflate_input(const Bytes& bytes, int flush) {
  zip_->next_in = const_cast<std::uint8_t*>(bytes.data());  // zlib only reads it
  zip_->avail_in = static_cast<uInt>(bytes.size());
  int result = Z_OK;
  do {
    zip_->next_out = zipped_.data();
    zip_->avail_out = static_cast<uInt>(zipped_.size());
    result = deflate(zip_.get(), flush);
    store(zipped_.data(), zipped_.size() - zip_->avail_out);
  } while (zip_->avail_out == 0 && result != Z_STREAM_END);
}

void FileSink::close() {
  if (zip_) deflate_input({}, Z_FINISH);
  std::FILE* const file = std::exchange(file_, nullptr);
  if (std::fclose(file) != 0) fail("cannot write to");
}

Bytes deflated(const Bytes& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  Bytes out(size);
  if (compress2(out.data(), &size, plain.data(), static_cast<uLong>(plain.size()),
                Z_DEFAULT_COMPRESSION) != Z_OK)
    throw std::runtime_error("cannot compress");
  out.resize(size);
  return out;
}

}  // namespace gzdsynth
