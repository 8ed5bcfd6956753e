// Puts header, records and damage together, and keeps them or pours them into a file.
#include "GzdWriter.h"

#include <algorithm>
#include <utility>

namespace gzdsynth {

namespace {

constexpr std::size_t drain_size = 1 << 20;
constexpr double rate_unit = 65536.0;

const char* magic_word(Magic kind) {
  switch (kind) {
    case Magic::Falc:
      return "MORVEN_TECH_FALCFILE";
    case Magic::Osp:
      return "MORVEN_TECH_OSPFILE";
    case Magic::FalcZip:
      return "MORVEN_TECH_FALCFILE ZIP";
    case Magic::OspZip:
      return "MORVEN_TECH_OSPFILE ZIP";
    case Magic::Comb:
      break;
  }
  return "MORVEN_TECH_COMBFILE";
}

const char* generation_lines(int generation) {
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

int packed_word(const BlockStart& block) {
  return (block.recordingMode << 8) | (block.fileFilter << 4) | block.linkFilter;
}

int eyes_of_events(int flags) {
  return ((flags & SMP_LEFT) != 0 ? 0x4000 : 0) | ((flags & SMP_RIGHT) != 0 ? 0x8000 : 0);
}

}  // namespace

std::string magic_line(Magic kind, bool carriageReturn) {
  return std::string(magic_word(kind)) + (carriageReturn ? "\r\n" : "\n");
}

GzdWriter::GzdWriter(int generation)
    : magic_(magic_line(Magic::Comb)), preamble_(generation_lines(generation)) {}

// ---- header -------------------------------------------------------------------------------------

GzdWriter& GzdWriter::magic(Magic kind, bool carriageReturn) {
  magic_ = magic_line(kind, carriageReturn);
  return compressed(kind == Magic::FalcZip || kind == Magic::OspZip);
}

GzdWriter& GzdWriter::magic_text(std::string line) {
  magic_ = std::move(line);
  return *this;
}

GzdWriter& GzdWriter::preamble_line(std::string_view line) {
  preamble_.append(line).push_back('\n');
  return *this;
}

GzdWriter& GzdWriter::clear_preamble() {
  preamble_.clear();
  return *this;
}

GzdWriter& GzdWriter::endp_text(std::string line) {
  endp_ = std::move(line);
  return *this;
}

GzdWriter& GzdWriter::compressed(bool on) {
  compressed_ = on;
  return *this;
}

GzdWriter& GzdWriter::end_tag(bool on) {
  endTag_ = on;
  return *this;
}

// ---- records ------------------------------------------------------------------------------------

GzdWriter& GzdWriter::sample(const SampleRecord& record) {
  put_sample(body_, record);
  drain_when_large();
  return *this;
}

GzdWriter& GzdWriter::gaze_sample(std::uint32_t time, double x, double y, int pupil, int eye) {
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

EventRecord GzdWriter::block_start(unsigned type, const BlockStart& block) {
  gazePrescale_ = block.gaze_prescale;
  const bool events = type == GZD_START_EVENTS;
  EventRecord record(type, block.eye, block.positionType);
  record.start(block.time);
  if (block.rate > 0) record.end(static_cast<std::uint32_t>(block.rate * rate_unit));
  record.flags(events ? block.event_flags : block.sample_flags);
  if (events) record.input(block.eventEyes.value_or(eyes_of_events(block.event_flags)));
  record.pupil_start(block.gaze_prescale).pupil_end(block.velocityPrescale);
  if (block.pupilPrescale) record.buttons(*block.pupilPrescale);
  if (block.headPrescale) record.velocity_peak(*block.headPrescale);
  record.pupil_average(block.divisor).resolution_end(packed_word(block), block.pupilType);
  return record;
}

GzdWriter& GzdWriter::start_samples(const BlockStart& block) {
  return event(block_start(GZD_START_SAMPLES, block));
}

GzdWriter& GzdWriter::start_events(const BlockStart& block) {
  return event(block_start(GZD_START_EVENTS, block));
}

GzdWriter& GzdWriter::end_samples(std::uint32_t time, int eye) {
  return event(EventRecord(GZD_END_SAMPLES, eye, 0).end(time));
}

GzdWriter& GzdWriter::end_events(std::uint32_t time, int eye) {
  return event(EventRecord(GZD_END_EVENTS, eye, 0).end(time));
}

GzdWriter& GzdWriter::start_block(const BlockStart& block) {
  return start_events(block).start_samples(block);
}

GzdWriter& GzdWriter::end_block(std::uint32_t time) {
  return end_samples(time).end_events(time);
}

GzdWriter& GzdWriter::message(std::uint32_t time, std::string_view text) {
  return event(EventRecord(GZD_MESSAGE, GZD_LEFT_EYE, 0).start(time).text(text));
}

GzdWriter& GzdWriter::long_message(std::uint32_t time, int id, std::string_view text,
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
  put_bytes(body_, bytes);
  drain_when_large();
  return *this;
}

// ---- results ------------------------------------------------------------------------------------

Bytes GzdWriter::header() const {
  Bytes out;
  put_text(out, magic_);
  put_text(out, preamble_);
  put_text(out, endp_);
  return out;
}

Bytes GzdWriter::bytes() const {
  Bytes body = body_;
  if (endTag_) put_word(body, 0);
  Bytes file = header();
  put_bytes(file, compressed_ ? deflated(body) : body);
  return file;
}

void GzdWriter::save(const std::string& path) const {
  save_bytes(bytes(), path);
}

void GzdWriter::stream_to(const std::string& path) {
  sink_ = std::make_unique<FileSink>(path);
}

void GzdWriter::drain_when_large() {
  if (sink_ && body_.size() >= drain_size) drain();
}

void GzdWriter::drain() {
  if (!headerSent_) {
    sink_->write(header());
    if (compressed_) sink_->begin_compression();
    headerSent_ = true;
  }
  sink_->write(body_);
  drained_ += body_.size();
  body_.clear();
}

void GzdWriter::finish() {
  if (endTag_) put_word(body_, 0);
  drain();
  sink_->close();
  sink_.reset();
}

// ---- damage -------------------------------------------------------------------------------------

Bytes without_tail(Bytes file, std::size_t count) {
  const std::size_t left = file.size() - std::min(count, file.size());
  return cut_at(std::move(file), left);
}

Bytes cut_at(Bytes file, std::size_t count) {
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

void save_bytes(const Bytes& file, const std::string& path) {
  FileSink sink(path);
  sink.write(file);
  sink.close();
}

}  // namespace gzdsynth
