// The table of column groups, in the order of the line: which samples have the group, what writes
// it, and its labels. Plan and header are both read off it.
#include "samples/sample_plan.h"

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

#include "asc/number.h"
#include "asc/output.h"
#include "cli/options.h"
#include "gaze3d/head_gaze.h"
#include "samples/sample_eye_columns.h"
#include "samples/sample_head_columns.h"

namespace gzdconv {

namespace {

constexpr int left = GZD_LEFT_EYE;
constexpr int right = GZD_RIGHT_EYE;
constexpr int word_decimals = 1;

// ---- input, buttons, status ---------------------------------------------------------------------

char* write_input(char* place, SampleLine line) {
  const std::uint32_t word = line.sample.input;
  return word == NOT_RECORDED_WORD ? write_missing(place)
                                   : write_column(place, word, form_of(word_decimals));
}

char* write_buttons(char* place, SampleLine line) {
  return write_column(place, std::uint32_t{line.sample.buttons}, form_of(word_decimals));
}

constexpr std::size_t status_length(bool pose, bool left_eye, bool right_eye) {
  return 2 + (pose ? 1 : 0) + (left_eye ? 2 : 0) + (right_eye ? 2 : 0);
}

using StatusText = std::array<char, 8>;

// Interpolated, calibration warning, and for each printed eye missing and recovery.
constexpr StatusText make_status(unsigned word, bool pose, bool left_eye, bool right_eye) {
  StatusText text{};
  std::size_t length = 0;
  const auto put = [&](char c) { text[length++] = c; };
  put('\t');
  put(mark(word, GZD_STATUS_INTERPOLATED, 'I'));
  if (pose) put(mark(word, GZD_STATUS_CALIBRATION, 'W'));
  if (left_eye) {
    put(mark(word, GZD_STATUS_LEFT_MISSING, 'C'));
    put(mark(word, GZD_STATUS_LEFT_RECOVERY, 'R'));
  }
  if (right_eye) {
    put(mark(word, GZD_STATUS_RIGHT_MISSING, 'C'));
    put(mark(word, GZD_STATUS_RIGHT_RECOVERY, 'R'));
  }
  return text;
}

// Of the status words, by the bits from 0x0100 up to 0x1000, those with a calibration warning last.
constexpr unsigned status_shift = 8;
constexpr unsigned status_count = 0x20;
using StatusTexts = std::array<StatusText, 2 * status_count>;

template <bool pose, bool left_eye, bool right_eye>
constexpr StatusTexts make_status_texts() {
  StatusTexts texts{};
  for (unsigned bits = 0; bits < status_count; ++bits) {
    const unsigned word = bits << status_shift;
    texts[bits] = make_status(word, pose, left_eye, right_eye);
    texts[bits + status_count] =
        make_status(word | GZD_STATUS_CALIBRATION, pose, left_eye, right_eye);
  }
  return texts;
}

template <bool pose, bool left_eye, bool right_eye>
char* write_status_text(char* place, unsigned word) {
  static constexpr StatusTexts texts = make_status_texts<pose, left_eye, right_eye>();
  const unsigned warning = pose && (word & GZD_STATUS_CALIBRATION) != 0 ? status_count : 0;
  const StatusText& text = texts[(word >> status_shift & (status_count - 1)) + warning];
  std::memcpy(place, text.data(), text.size());
  return place + status_length(pose, left_eye, right_eye);
}

template <bool left_eye, bool right_eye>
char* write_status(char* place, SampleLine line) {
  const unsigned word = line.sample.errors;
  return line.state.prints_pose_flags ? write_status_text<true, left_eye, right_eye>(place, word)
                                      : write_status_text<false, left_eye, right_eye>(place, word);
}

void append_status_word(const SampleLine& line) {
  char digits[8];
  const char* const end = std::to_chars(digits, digits + sizeof digits, line.sample.errors, 16).ptr;
  lpbuffer.append(std::string_view(" error: "));
  lpbuffer.append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

char* write_gaze_3d(char* place, SampleLine line) {
  return write_head_gaze(place, line.sample);
}

// ---- the table ----------------------------------------------------------------------------------

struct ColumnGroup {
  bool (*applies)(const SampleShape&);
  SampleColumn write;
  std::string_view labels;  // empty: columns without labels
};

using Shape = SampleShape;

bool has_status(const Shape& s, bool left_eye, bool right_eye) {
  return s.cr_flags && s.left_printed == left_eye && s.right_printed == right_eye;
}
bool both_extended(const Shape& s) {
  return s.extended && s.left_printed && s.right_printed;
}
bool left_extended(const Shape& s) {
  return s.extended && s.left_printed && !s.right_printed;
}
bool right_extended(const Shape& s) {
  return s.extended && s.right_printed && !s.left_printed;
}
bool extended(const Shape& s) {
  return s.extended && !both_extended(s);
}

bool has_pair(const Shape& s) {
  return s.left_printed && s.right_printed;
}
// Printed as it is recorded, in columns of the usual form or of another.
template <int position_type, bool usual>
bool has_plain_pair(const Shape& s) {
  return has_pair(s) && options.gaze_map == 0 && s.position_type == position_type &&
         has_usual_form() == usual;
}
bool has_other_pair(const Shape& s) {
  const bool known = s.position_type == GZD_POSITION_GAZE || s.position_type == GZD_POSITION_HREF ||
                     s.position_type == GZD_POSITION_PUPIL;
  return has_pair(s) && !(known && options.gaze_map == 0);
}

bool has_plain_velocities(const Shape& s) {
  return s.velocity && has_pair(s) && options.gaze_map == 0 && has_usual_form();
}

constexpr std::string_view both_labels = "left-x\tleft-y\tleft-p\tright-x\tright-y\tright-p\t";

// x, y and pupil size of both eyes have seven rows, one of which applies: two for each kind of
// position (columns of the usual form, of another), written as recorded, and one for all else.
constexpr ColumnGroup column_groups[] = {
    {has_plain_pair<GZD_POSITION_GAZE, true>, write_both_positions<&FSAMPLE::gx, &FSAMPLE::gy>,
     both_labels},
    {has_plain_pair<GZD_POSITION_GAZE, false>, write_formed_positions<&FSAMPLE::gx, &FSAMPLE::gy>,
     both_labels},
    {has_plain_pair<GZD_POSITION_HREF, true>, write_both_positions<&FSAMPLE::hx, &FSAMPLE::hy>,
     both_labels},
    {has_plain_pair<GZD_POSITION_HREF, false>, write_formed_positions<&FSAMPLE::hx, &FSAMPLE::hy>,
     both_labels},
    {has_plain_pair<GZD_POSITION_PUPIL, true>, write_both_positions<&FSAMPLE::px, &FSAMPLE::py>,
     both_labels},
    {has_plain_pair<GZD_POSITION_PUPIL, false>, write_formed_positions<&FSAMPLE::px, &FSAMPLE::py>,
     both_labels},
    {has_other_pair, appended<append_both_positions>, both_labels},
    {[](const Shape& s) { return s.left_printed && !s.right_printed; },
     appended<append_position<left>>, "left-x\tleft-y\tleft-p\t"},
    {[](const Shape& s) { return s.right_printed && !s.left_printed; },
     appended<append_position<right>>, "right-x\tright-y\tright-p\t"},
    {[](const Shape& s) { return s.screen_resolution; }, write_screen_resolutions,
     "left-rx\tleft-ry\tright-rx\tright-ry\t"},
    {has_plain_velocities, write_both_velocities, "left-xvel\tleft-yvel\tright-xvel\tright-yvel\t"},
    {[](const Shape& s) { return s.velocity && s.left_printed && !has_plain_velocities(s); },
     write_velocity<left>, "left-xvel\tleft-yvel\t"},
    {[](const Shape& s) { return s.velocity && s.right_printed && !has_plain_velocities(s); },
     write_velocity<right>, "right-xvel\tright-yvel\t"},
    {[](const Shape& s) { return s.resolution; }, write_resolution, "xres\tyres\t"},
    {[](const Shape& s) { return s.markers; }, write_markers,
     "marker_1\tmarker_2\tmarker_3\tmarker_4\tmarker_5\tmarker_6\tmarker_7\tmarker_8\t"},
    {[](const Shape& s) { return s.input; }, write_input, "input\t"},
    {[](const Shape& s) { return s.buttons; }, write_buttons, "buttons\t"},
    {[](const Shape& s) { return has_status(s, true, true); }, write_status<true, true>,
     "CR-flags\t"},
    {[](const Shape& s) { return has_status(s, true, false); }, write_status<true, false>,
     "CR-flags\t"},
    {[](const Shape& s) { return has_status(s, false, true); }, write_status<false, true>,
     "CR-flags\t"},
    {[](const Shape& s) { return has_status(s, false, false); }, write_status<false, false>,
     "CR-flags\t"},
    {[](const Shape& s) { return s.cr_flags && options.sfhmf != 0; }, appended<append_status_word>,
     ""},
    {[](const Shape& s) { return s.average; }, write_average, "avg-gx\tavg-gy\t"},
    {[](const Shape& s) { return s.uncorrected && s.left_present; }, write_uncorrected<left>, ""},
    {[](const Shape& s) { return s.uncorrected && s.right_present; }, write_uncorrected<right>, ""},
    {[](const Shape& s) { return s.target; }, write_target, "target-x\ttarget-y\ttarget-dist\t"},
    {[](const Shape& s) { return s.target_flags; }, write_target_flags, "target-flags\t"},
    {[](const Shape& s) { return s.second_eye; }, write_second_eye_flags, ""},
    {[](const Shape& s) { return s.head_tracking; }, write_head_tracking,
     "head-rotation-x\thead-rotation-y\thead-rotation-z\t"
     "head-position-x\thead-position-y\thead-position-z\t"},
    {[](const Shape& s) { return s.head_pose; }, write_marker_flags, "head-marker-flags\t"},
    {[](const Shape& s) { return s.head_pose && options.sfhmf != 0; }, appended<append_marker_bits>,
     ""},
    {both_extended, write_both_extended,
     "head-in-space-left-x\thead-in-space-right-x\thead-in-space-x\t"
     "head-in-space-left-y\thead-in-space-right-y\thead-in-space-y\t"
     "eye-in-head-left-x\teye-in-head-right-x\teye-in-head-cyclopean-x\t"
     "eye-in-head-left-y\teye-in-head-right-y\teye-in-head-cyclopean-y\t"},
    {left_extended, write_head_element<&FSAMPLE::unused_headInSpaceX, left>,
     "head-in-space-left-x\t"},
    {right_extended, write_head_element<&FSAMPLE::unused_headInSpaceX, right>,
     "head-in-space-right-x\t"},
    {extended, write_head_value<&FSAMPLE::headInSpaceX>, "head-in-space-x\t"},
    {left_extended, write_head_element<&FSAMPLE::unused_headInSpaceY, left>,
     "head-in-space-left-y\t"},
    {right_extended, write_head_element<&FSAMPLE::unused_headInSpaceY, right>,
     "head-in-space-right-y\t"},
    {extended, write_head_value<&FSAMPLE::headInSpaceY>, "head-in-space-y\t"},
    {left_extended, write_head_element<&FSAMPLE::eyeInHeadX, left>, "eye-in-head-left-x\t"},
    {right_extended, write_head_element<&FSAMPLE::eyeInHeadX, right>, "eye-in-head-right-x\t"},
    {extended, write_head_element<&FSAMPLE::eyeInHeadX, 2>, "eye-in-head-cyclopean-x\t"},
    {left_extended, write_head_element<&FSAMPLE::eyeInHeadY, left>, "eye-in-head-left-y\t"},
    {right_extended, write_head_element<&FSAMPLE::eyeInHeadY, right>, "eye-in-head-right-y\t"},
    {extended, write_head_element<&FSAMPLE::eyeInHeadY, 2>, "eye-in-head-cyclopean-y\t"},
    {[](const Shape& s) { return s.head_resolution; }, write_head_resolution,
     "head-in-space-resolution-x\thead-in-space-resolution-y\t"
     "eye-in-head-resolution-x\teye-in-head-resolution-y\t"},
    {[](const Shape& s) { return s.ellipse && s.left_printed; }, write_ellipse<left>,
     "pupil-ellipse-left-x\tpupil-ellipse-left-y\tpupil-ellipse-major-left-axis\t"
     "pupil-ellipse-minor-left-axis\tpupil-ellipse-left-angle\t"},
    {[](const Shape& s) { return s.ellipse && s.right_printed; }, write_ellipse<right>,
     "pupil-ellipse-right-x\tpupil-ellipse-right-y\tpupil-ellipse-major-right-axis\t"
     "pupil-ellipse-minor-right-axis\tpupil-ellipse-angle-right\t"},
    {[](const Shape& s) { return s.gaze_3d; }, write_gaze_3d, ""},
};

}  // namespace

void SamplePlan::choose(const RunState& state, const RECORDINGS& block, const FSAMPLE& sample) {
  static_assert(std::size(column_groups) <= max_columns);
  const SampleShape shape(state, block, sample);
  count_ = 0;
  for (const ColumnGroup& group : column_groups) {
    if (group.applies(shape)) columns_[count_++] = group.write;
  }
  key_ = shape_key(sample);
}

void append_column_labels(const SampleShape& shape) {
  for (const ColumnGroup& group : column_groups) {
    if (group.applies(shape)) lpbuffer.append(group.labels);
  }
}

}  // namespace gzdconv
