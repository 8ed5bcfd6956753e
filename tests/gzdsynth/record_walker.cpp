#include "record_walker.h"

#include <stdexcept>

namespace gzdsynth {

namespace {

class Cursor {
 public:
  explicit Cursor(const Bytes& bytes) : bytes_(bytes) {}

  unsigned byte() { return bytes_.at(at_++); }
  int word() {
    const unsigned high = byte();
    return static_cast<std::int16_t>((high << 8) | byte());
  }
  std::uint32_t integer() {
    const auto high = static_cast<std::uint32_t>(word() & 0xFFFF);
    return (high << 16) | static_cast<std::uint32_t>(word() & 0xFFFF);
  }
  Bytes take(std::size_t count) {
    Bytes out;
    while (out.size() < count) out.push_back(static_cast<std::uint8_t>(byte()));
    return out;
  }

 private:
  const Bytes& bytes_;
  std::size_t at_ = 0;
};

void takePositions(Cursor& in, unsigned flags, std::array<int, 2>& x, std::array<int, 2>& y) {
  for (std::size_t eye = 0; eye < 2; ++eye) {
    if (!(flags & (eye == 0 ? SMP_LEFT : SMP_RIGHT))) continue;
    x[eye] = in.word();
    y[eye] = in.word();
  }
}

std::vector<SampleBlock> takeBlocks(Cursor& in) {
  std::vector<SampleBlock> blocks;
  while (const unsigned length = in.byte()) {
    const unsigned kind = in.byte();
    blocks.push_back({length, kind, in.take(length)});
  }
  return blocks;
}

WalkedRecord takeSample(Cursor& in, unsigned tag, std::uint32_t& clock) {
  WalkedRecord record;
  record.isSample = true;
  SampleRecord& s = record.sample;
  s.flags = tag;
  clock = tag & SMP_TIME_ABSOLUTE ? in.integer() : clock + in.byte();
  s.time = clock;
  if (tag & SMP_PUPIL_POS) takePositions(in, tag, s.px, s.py);
  if (tag & SMP_HREF) takePositions(in, tag, s.hx, s.hy);
  if (tag & SMP_GAZE) takePositions(in, tag, s.gx, s.gy);
  if (tag & SMP_RESOLUTION) {
    s.rx = in.word();
    s.ry = in.word();
  }
  if (tag & SMP_PUPIL_SIZE) {
    if (tag & SMP_LEFT) s.pa[0] = in.word();
    if (tag & SMP_RIGHT) s.pa[1] = in.word();
  }
  if (tag & SMP_STATUS) s.status = in.word();
  if (tag & SMP_INPUT) s.input = in.word();
  if (tag & SMP_BUTTONS) s.buttons = in.word();
  if (tag & SMP_HEAD_DATA) {
    s.headType = in.byte();
    for (std::size_t i = 0; i < (s.headType & 15U) && i < 8; ++i) s.headData[i] = in.word();
  }
  if (tag & SMP_EXTENDED) s.blocks = takeBlocks(in);
  if (tag & SMP_SKIP_BLOCKS) s.skipped = takeBlocks(in);
  return record;
}

bool isPair(unsigned code) {
  switch (code) {
    case 40:
    case 41:
    case 42:
    case 43:
    case 72:
    case 73:
    case 74:
    case 75:
    case 104:
    case 105:
    case 106:
      return true;
    default:
      return false;
  }
}

WalkedRecord takeEvent(Cursor& in, unsigned tag) {
  WalkedRecord record;
  record.type = (tag >> 8) & 0x3F;
  record.eye = (tag >> 14) == 1 ? GZD_RIGHT_EYE : GZD_LEFT_EYE;
  while (const unsigned code = in.byte()) {
    auto& values = record.fields[code];
    if (code == 33 || code == 65) {
      values.push_back(in.integer());
    } else if (code == 94) {
      const Bytes text = in.take(static_cast<std::size_t>(in.word()));
      record.text.assign(text.begin(), text.end());
    } else {
      values.push_back(in.word());
      if (isPair(code)) values.push_back(in.word());
    }
  }
  return record;
}

}  // namespace

std::vector<WalkedRecord> walkRecords(const Bytes& body) {
  std::vector<WalkedRecord> records;
  std::uint32_t clock = 0;
  Cursor in(body);
  while (const auto tag = static_cast<unsigned>(in.word() & 0xFFFF))
    records.push_back(tag & SMP_IS_SAMPLE ? takeSample(in, tag, clock) : takeEvent(in, tag));
  return records;
}

}  // namespace gzdsynth
