// Inflation, of damaged streams too.
#include "stream/zipread.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <random>
#include <string>

using namespace gzd;

namespace {

struct Closer {
  void operator()(FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<FILE, Closer>;

std::string deflated(const std::string& text) {
  uLongf size = compressBound(text.size());
  std::string out(size, '\0');
  EXPECT_EQ(compress(reinterpret_cast<Bytef*>(out.data()), &size,
                     reinterpret_cast<const Bytef*>(text.data()), text.size()),
            Z_OK);
  out.resize(size);
  return out;
}

// Letters without order: they shrink a little only.
std::string noise(std::size_t count) {
  std::mt19937 random(1);
  std::string text(count, ' ');
  for (char& c : text) c = static_cast<char>('a' + random() % 26);
  return text;
}

struct Inflated {
  int result;
  std::string text;
};

Inflated inflate_all(const std::string& body) {
  const File in(std::tmpfile());
  const File out(std::tmpfile());
  std::fwrite("head", 1, 4, in.get());
  std::fwrite(body.data(), 1, body.size(), in.get());
  std::fseek(in.get(), 4, SEEK_SET);
  Inflated inflated{do_uncompress(in.get(), out.get()), ""};
  inflated.text.resize(static_cast<std::size_t>(std::ftell(out.get())));
  std::rewind(out.get());
  EXPECT_EQ(std::fread(inflated.text.data(), 1, inflated.text.size(), out.get()),
            inflated.text.size());
  return inflated;
}

TEST(Uncompress, WholeStreamsOfSizesAroundTheBuffers) {
  for (const std::size_t size : {0u, 1u, 16383u, 16384u, 16385u, 32768u, 131072u, 500'000u}) {
    const std::string text = noise(size);
    const Inflated inflated = inflate_all(deflated(text));
    EXPECT_EQ(inflated.result, 0) << size;
    EXPECT_EQ(inflated.text, text) << size;
  }
  const std::string zeros(3'000'000, '\0');
  EXPECT_EQ(inflate_all(deflated(zeros)).text, zeros);
}

TEST(Uncompress, ACutStreamGivesWhatCameBeforeTheCut) {
  const std::string text = noise(60'000);
  const std::string whole = deflated(text);
  std::size_t before = 0;
  for (std::size_t cut = 0; cut < whole.size(); cut += 1013) {
    const Inflated inflated = inflate_all(whole.substr(0, cut));
    EXPECT_EQ(inflated.result, -3) << cut;
    EXPECT_EQ(inflated.text, text.substr(0, inflated.text.size())) << cut;
    EXPECT_GE(inflated.text.size(), before);
    before = inflated.text.size();
  }
  EXPECT_GT(before, 50'000u);
  EXPECT_EQ(inflate_all(whole.substr(0, whole.size() - 1)).result, -3);
}

// Up to the damage, input and output go by pieces of 16384 bytes; what the piece at hand has
// produced is lost with it.
std::size_t length_before_damage(const std::string& body) {
  z_stream stream{};
  EXPECT_EQ(inflateInit(&stream), Z_OK);
  std::string input = body;
  std::string output(16384, '\0');
  std::size_t kept = 0;
  for (std::size_t at = 0; at < body.size(); at += 16384) {
    stream.next_in = reinterpret_cast<Bytef*>(input.data() + at);
    stream.avail_in = static_cast<uInt>(std::min<std::size_t>(16384, body.size() - at));
    do {
      stream.next_out = reinterpret_cast<Bytef*>(output.data());
      stream.avail_out = 16384;
      if (inflate(&stream, Z_NO_FLUSH) == Z_DATA_ERROR) {
        inflateEnd(&stream);
        return kept;
      }
      kept += 16384 - stream.avail_out;
    } while (stream.avail_out == 0);
  }
  inflateEnd(&stream);
  return kept;
}

TEST(Uncompress, DamageLosesNoMoreThanOnePiece) {
  const std::string text = noise(300'000);
  const std::string whole = deflated(text);
  int refused = 0;
  for (std::size_t at = 3; at < whole.size(); at += 9001) {
    std::string body = whole;
    body.replace(at, 8, 8, '\xFF');
    const Inflated inflated = inflate_all(body);
    EXPECT_EQ(inflated.result, -3) << at;
    EXPECT_EQ(inflated.text.size(), length_before_damage(body)) << at;
    if (inflated.text.size() < text.size()) ++refused;
  }
  EXPECT_GT(refused, 5);
}

TEST(Uncompress, ReadAndWriteErrorsAreTold) {
  const std::string body = deflated(noise(100'000));
  const File in(std::tmpfile());
  std::fwrite(body.data(), 1, body.size(), in.get());
  std::rewind(in.get());
  const File readOnly(std::fopen("/dev/null", "rb"));
  EXPECT_EQ(do_uncompress(in.get(), readOnly.get()), -1);
  const File writeOnly(std::fopen("/dev/null", "wb"));
  const File out(std::tmpfile());
  EXPECT_EQ(do_uncompress(writeOnly.get(), out.get()), -1);
}

// A file that takes its first write, fails the second, and takes all others.
struct Interrupted {
  std::string text;
  int writes = 0;
};

ssize_t write_interrupted(void* cookie, const char* bytes, std::size_t count) {
  auto& file = *static_cast<Interrupted*>(cookie);
  if (++file.writes == 2) return 0;
  file.text.append(bytes, count);
  return static_cast<ssize_t>(count);
}

TEST(Uncompress, NothingIsWrittenBehindAWriteThatFailed) {
  const std::string text = noise(400'000);
  const std::string body = deflated(text);
  const File in(std::tmpfile());
  std::fwrite(body.data(), 1, body.size(), in.get());
  std::rewind(in.get());
  Interrupted file;
  cookie_io_functions_t functions{};
  functions.write = write_interrupted;
  const File out(fopencookie(&file, "w", functions));
  std::setvbuf(out.get(), nullptr, _IONBF, 0);
  EXPECT_EQ(do_uncompress(in.get(), out.get()), -1);
  EXPECT_EQ(file.writes, 2);
  EXPECT_TRUE(text.starts_with(file.text));
}

}  // namespace
