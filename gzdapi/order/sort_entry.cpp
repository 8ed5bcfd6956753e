// Which class an item belongs to, and a table of which class comes first at one stamp.
#include "order/sort_entry.h"

#include <algorithm>

namespace gzd {

namespace {

constexpr std::size_t side_count = 16;

constexpr std::size_t index_of(SortClass sortClass) {
  return static_cast<std::size_t>(sortClass);
}

// ---- classes ------------------------------------------------------------------------------------

constexpr std::array<SortClass, 256> make_classes_of_types() {
  std::array<SortClass, 256> classes{};
  std::fill(classes.begin(), classes.end(), SortClass::Other);
  for (const int type : {GZD_FIXATION_UPDATE, GZD_BREAK_PARSE, GZD_BUTTON, GZD_INPUT})
    classes[static_cast<std::size_t>(type)] = SortClass::FileOrdered;
  for (std::size_t type = GZD_START_PARSE; type <= GZD_END_PARSE; ++type)
    classes[type] =
        SortClass{static_cast<byte>(index_of(SortClass::StartParse) + type - GZD_START_PARSE)};
  for (std::size_t type = GZD_START_SACCADE; type <= GZD_END_FIXATION; ++type)
    classes[type] =
        SortClass{static_cast<byte>(index_of(SortClass::StartSaccade) + type - GZD_START_SACCADE)};
  for (std::size_t type = GZD_START_SAMPLES; type <= GZD_END_EVENTS; ++type)
    classes[type] =
        SortClass{static_cast<byte>(index_of(SortClass::StartSamples) + type - GZD_START_SAMPLES)};
  classes[GZD_START_BLINK] = SortClass::StartBlink;
  classes[GZD_END_BLINK] = SortClass::EndBlink;
  classes[GZD_MESSAGE] = SortClass::Message;
  classes[GZD_SAMPLE] = SortClass::Sample;
  return classes;
}

constexpr std::array<SortClass, 256> classes_of_types = make_classes_of_types();

constexpr bool is_guard(SortClass c) {
  return c == SortClass::LowGuard || c == SortClass::HighGuard;
}

constexpr bool is_boundary(SortClass c) {
  return c == SortClass::BlockStart || c == SortClass::BlockEnd;
}

constexpr bool is_blink(SortClass c) {
  return c >= SortClass::StartBlink;
}

constexpr bool is_start_of_blink(SortClass c) {
  return is_blink(c) && c < SortClass::EndBlink;
}

constexpr bool is_end_of_blink(SortClass c) {
  return c >= SortClass::EndBlink;
}

constexpr bool is_event(SortClass c) {
  return c >= SortClass::StartParse;
}

// Starts and ends alternate.
constexpr bool is_opening(SortClass c) {
  if (is_blink(c)) return is_start_of_blink(c);
  return is_event(c) && (index_of(c) - index_of(SortClass::StartParse)) % 2 == 0;
}

constexpr bool is_closing(SortClass c) {
  return is_event(c) && !is_opening(c);
}

constexpr bool are_of_one_type(SortClass a, SortClass b) {
  return a == b || (is_start_of_blink(a) && is_start_of_blink(b)) ||
         (is_end_of_blink(a) && is_end_of_blink(b));
}

constexpr std::size_t side_of_blink(SortClass c) {
  return (index_of(c) - index_of(SortClass::StartBlink)) % side_count;
}

// ---- precedence ---------------------------------------------------------------------------------

constexpr Precedence when(bool before) {
  return before ? Precedence::Always : Precedence::Never;
}

constexpr Precedence boundary_precedence(SortClass a, SortClass b) {
  if (is_boundary(a) && is_boundary(b))
    return when(a == SortClass::BlockEnd && b == SortClass::BlockStart);
  if (a == SortClass::BlockStart) return Precedence::Always;
  if (is_boundary(a) || b == SortClass::BlockStart) return Precedence::Never;
  return when(!is_opening(a) && a != SortClass::Other);  // b is the end of a block
}

constexpr Precedence event_precedence(SortClass a, SortClass b) {
  if (are_of_one_type(a, b)) return Precedence::ByFile;
  // A start and an end of blink of different eyes come before each other.
  if (is_blink(a) && is_blink(b))
    return when(side_of_blink(a) != side_of_blink(b) || is_start_of_blink(a));
  if (is_opening(a) != is_opening(b)) return when(is_opening(a));
  return when((a == SortClass::StartSaccade && is_start_of_blink(b)) ||
              (is_end_of_blink(a) && b == SortClass::EndSaccade));
}

constexpr Precedence precedence_of(SortClass a, SortClass b) {
  const auto either = [&](SortClass c) { return a == c || b == c; };
  if (is_guard(a) || is_guard(b))
    return when(a != b && (a == SortClass::LowGuard || b == SortClass::HighGuard));
  if (is_boundary(a) || is_boundary(b)) return boundary_precedence(a, b);
  if (either(SortClass::FileOrdered)) return Precedence::ByFile;
  // A message is before a sample, and a sample that lies earlier in the file is before a message.
  if (a == SortClass::Message && b == SortClass::Sample) return Precedence::Always;
  if (either(SortClass::Message)) return Precedence::ByFile;
  if (either(SortClass::Other)) return Precedence::Never;
  if (a == SortClass::Sample) return when(is_closing(b));
  if (b == SortClass::Sample) return when(is_opening(a));
  return event_precedence(a, b);
}

constexpr PrecedenceTable make_precedence() {
  PrecedenceTable table{};
  for (std::size_t a = 0; a < sort_classes; ++a) {
    for (std::size_t b = 0; b < sort_classes; ++b)
      table[a][b] = precedence_of(SortClass{static_cast<byte>(a)}, SortClass{static_cast<byte>(b)});
  }
  return table;
}

}  // namespace

constexpr PrecedenceTable precedence_table = make_precedence();

SortClass sort_class_of(const GZDItem& item) {
  if (item.isRecording())
    return item.isRecordingStart() ? SortClass::BlockStart : SortClass::BlockEnd;
  const SortClass sortClass = classes_of_types[static_cast<std::size_t>(item.getItemType())];
  if (!is_blink(sortClass)) return sortClass;
  return SortClass{static_cast<byte>(index_of(sortClass) + item.getSide())};
}

bool ItemOrder::beforeAtOneStamp(const SortEntry& a, const SortEntry& b) const {
  const Precedence precedence = precedence_table[a.number][b.number];
  if (precedence == Precedence::ByFile) return filePos(a) < filePos(b);
  return precedence == Precedence::Always;
}

}  // namespace gzd
