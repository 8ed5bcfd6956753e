#include "GzdWriter.h"

#include <algorithm>
#include <utility>

namespace gzdsynth {

namespace {

constexpr std::size_t kDrainSize = 1 << 20;
constexpr double kRateUnit = 65536.0;

const char* magicWord(Magic kind) {
  switch (kind) {
    case Magic::kFalc:
      return "MORVEN_TECH_FALCFILE";
    case Magic::kOsp:
      return "MORVEN_TECH_OSPFILE";
    case Magic::kFalcZip:
      return "MORVEN_TECH_FALCFILE ZIP";
    case Magic::kOspZip:
      return "MORVEN_TECH_OSPFILE ZIP";
    case Magic::kComb:
      break;
  }
  return "MORVEN_TECH_COMBFILE";
}

const char* generationLines(int generation) {
  switch (generation) {
    case 0:
      return "";
    case 1:
      return "SOURCE: OVILO MERLIN\n";
    case 2:
      return "VERSION: OVILO KESTREL 1\nSOURCE: OVILO KESTREL\n";
    case 3:
      return "VERSION: OVILO KESTREL 1\nSOURCE: OVILO FALCON\n";
    default:
      return "VERSION: OVILO OSPREY 3\nSOURCE: OVILO OSPREY\n";
  }
}

int packedWord(const BlockStart& block) {
  return (block.recordingMode << 8) | (block.fileFilter << 4) | block.linkFilter;
}

int eyesOfEvents(int flags) {
  return ((flags & SMP_LEFT) != 0 ? 0x4000 : 0) | ((flags & SMP_RIGHT) != 0 ? 0x8000 : 0);
}

}  // namespace

std::string magicLine(Magic kind, bool carriageReturn) {
  return std::string(magicWord(kind)) + (carriageReturn ? "\r\n" : "\n");
}

GzdWriter::GzdWriter(int generation)
    : magic_(magicLine(Magic::kComb)), preamble_(generationLines(generation)) {}

// ---- header ----

GzdWriter& GzdWriter::magic(Magic kind, bool carriageReturn) {
  magic_ = magicLine(kind, carriageReturn);
  return compressed(kind == Magic::kFalcZip || kind == Magic::kOspZip);
}

GzdWriter& GzdWriter::magicText(std::string line) {
  magic_ = std::move(line);
  return *this;
}

GzdWriter& GzdWriter::preambleLine(std::string_view line) {
  preamble_.append(line).push_back('\n');
  return *this;
}

GzdWriter& GzdWriter::clearPreamble() {
  preamble_.clear();
  return *this;
}

GzdWriter& GzdWriter::endpText(std::string line) {
  endp_ = std::move(line);
  return *this;
}

GzdWriter& GzdWriter::compressed(bool on) {
  compressed_ = on;
  return *this;
}

GzdWriter& GzdWriter::endTag(bool on) {
  endTag_ = on;
  return *this;
}

// ---- records ----

GzdWriter& GzdWriter::sample(const SampleRecord& record) {
  putSample(body_, record);
  drainWhenLarge();
  return *this;
}

GzdWriter& GzdWriter::gazeSample(std::uint32_t time, double x, double y, int pupil, int eye) {
  const auto side = static_cast<std::size_t>(eye);
  SampleRecord record{.time = time};
  if (eye == GZD_RIGHT_EYE) record.flags ^= SMP_LEFT | SMP_RIGHT;
  record.gx[side] = stored(x, gazePrescale_);
  record.gy[side] = stored(y, gazePrescale_);
  record.pa[side] = pupil;
  return sample(record);
}

GzdWriter& GzdWriter::event(const EventRecord& record) {
  return raw(record.bytes());
}

EventRecord GzdWriter::blockStart(unsigned type, const BlockStart& block) {
  gazePrescale_ = block.gazePrescale;
  const bool events = type == GZD_START_EVENTS;
  EventRecord record(type, block.eye, block.positionType);
  record.start(block.time);
  if (block.rate > 0) record.end(static_cast<std::uint32_t>(block.rate * kRateUnit));
  record.flags(events ? block.eventFlags : block.sampleFlags);
  if (events) record.input(block.eventEyes.value_or(eyesOfEvents(block.eventFlags)));
  record.pupilStart(block.gazePrescale).pupilEnd(block.velocityPrescale);
  if (block.pupilPrescale) record.buttons(*block.pupilPrescale);
  if (block.headPrescale) record.velocityPeak(*block.headPrescale);
  record.pupilAverage(block.divisor).resolutionEnd(packedWord(block), block.pupilType);
  return record;
}

GzdWriter& GzdWriter::startSamples(const BlockStart& block) {
  return event(blockStart(GZD_START_SAMPLES, block));
}

GzdWriter& GzdWriter::startEvents(const BlockStart& block) {
  return event(blockStart(GZD_START_EVENTS, block));
}

GzdWriter& GzdWriter::endSamples(std::uint32_t time, int eye) {
  return event(EventRecord(GZD_END_SAMPLES, eye, 0).end(time));
}

GzdWriter& GzdWriter::endEvents(std::uint32_t time, int eye) {
  return event(EventRecord(GZD_END_EVENTS, eye, 0).end(time));
}

GzdWriter& GzdWriter::startBlock(const BlockStart& block) {
  return startEvents(block).startSamples(block);
}

GzdWriter& GzdWriter::endBlock(std::uint32_t time) {
  return endSamples(time).endEvents(time);
}

GzdWriter& GzdWriter::message(std::uint32_t time, std::string_view text) {
  return event(EventRecord(GZD_MESSAGE, GZD_LEFT_EYE, 0).start(time).text(text));
}

GzdWriter& GzdWriter::longMessage(std::uint32_t time, int id, std::string_view text,
                                  std::size_t pieceSize) {
  const std::string tail = std::string(" ").append(std::to_string(id)).append("_");
  std::string marker = "!V LONGMS_ST" + tail;
  do {
    const std::string_view piece = text.substr(0, pieceSize);
    message(time, marker + std::string(piece));
    text.remove_prefix(piece.size());
    marker = "!V LONGMS_CONT" + tail;
  } while (!text.empty());
  return *this;
}

GzdWriter& GzdWriter::button(std::uint32_t time, int buttons) {
  return event(EventRecord(GZD_BUTTON, GZD_LEFT_EYE, 0).start(time).buttons(buttons));
}

GzdWriter& GzdWriter::input(std::uint32_t time, int value) {
  return event(EventRecord(GZD_INPUT, GZD_LEFT_EYE, 0).start(time).input(value));
}

GzdWriter& GzdWriter::raw(const Bytes& bytes) {
  putBytes(body_, bytes);
  drainWhenLarge();
  return *this;
}

// ---- results ----

Bytes GzdWriter::header() const {
  Bytes out;
  putText(out, magic_);
  putText(out, preamble_);
  putText(out, endp_);
  return out;
}

Bytes GzdWriter::bytes() const {
  Bytes body = body_;
  if (endTag_) putWord(body, 0);
  Bytes file = header();
  putBytes(file, compressed_ ? deflated(body) : body);
  return file;
}

void GzdWriter::save(const std::string& path) const {
  saveBytes(bytes(), path);
}

void GzdWriter::streamTo(const std::string& path) {
  sink_ = std::make_unique<FileSink>(path);
}

void GzdWriter::drainWhenLarge() {
  if (sink_ && body_.size() >= kDrainSize) drain();
}

void GzdWriter::drain() {
  if (!headerSent_) {
    sink_->write(header());
    if (compressed_) sink_->beginCompression();
    headerSent_ = true;
  }
  sink_->write(body_);
  drained_ += body_.size();
  body_.clear();
}

void GzdWriter::finish() {
  if (endTag_) putWord(body_, 0);
  drain();
  sink_->close();
  sink_.reset();
}

// ---- damage ----

Bytes withoutTail(Bytes file, std::size_t count) {
  const std::size_t left = file.size() - std::min(count, file.size());
  return cutAt(std::move(file), left);
}

Bytes cutAt(Bytes file, std::size_t count) {
  file.resize(std::min(count, file.size()));
  return file;
}

Bytes flipped(Bytes file, std::size_t offset, unsigned mask) {
  file.at(offset) = static_cast<std::uint8_t>(file.at(offset) ^ mask);
  return file;
}

Bytes patched(Bytes file, std::size_t offset, const Bytes& patch) {
  for (std::size_t i = 0; i < patch.size(); ++i) file.at(offset + i) = patch[i];
  return file;
}

void saveBytes(const Bytes& file, const std::string& path) {
  FileSink sink(path);
  sink.write(file);
  sink.close();
}

}  // namespace gzdsynth
