// The one declaration of every table: its groups of columns, and each column's name, type, unit
// and meaning.
#include <array>
#include <initializer_list>

#include "schema.h"

namespace gzdtables {

namespace {

using Fields = std::vector<Field>;

constexpr const char* px = "px";
constexpr const char* ms = "ms";
constexpr const char* degrees = "deg";
constexpr const char* velocity = "deg/s";
constexpr const char* resolution = "px/deg";
constexpr const char* tracker_units = "tracker units";
constexpr const char* camera_units = "camera units";
constexpr const char* href_units = "1/15000 of the distance";

const std::array<const char*, 2> eyes{"left", "right"};

Field block() {
  return {"block", Type::int32, "", "number of the recording block, from 1; null outside blocks"};
}

Field trial() {
  return {"trial", Type::int32, "", "number of the trial, from 1; null outside trials"};
}

Field time(const char* of) {
  return {"time", Type::float64, ms, std::string("time ") + of + ", on the tracker's clock"};
}

// `name` with the side in front, for both eyes: columns that differ in the eye only.
Fields of_both_eyes(std::initializer_list<Field> columns) {
  Fields fields;
  for (const std::string eye : eyes)
    for (const Field& column : columns)
      fields.push_back({eye + "_" + column.name, column.type, column.unit,
                        column.description + ", " + eye + " eye", column.choices});
  return fields;
}

Fields joined(std::initializer_list<Fields> lists) {
  Fields fields;
  for (const Fields& list : lists) fields.insert(fields.end(), list.begin(), list.end());
  return fields;
}

// Two columns, horizontal and vertical.
Fields pair(const std::string& name, const char* unit, const std::string& what) {
  return {{name + "_x", Type::float32, unit, "horizontal " + what},
          {name + "_y", Type::float32, unit, "vertical " + what}};
}

Fields pair_of_both_eyes(const std::string& name, const char* unit, const std::string& what) {
  Fields fields;
  for (const std::string eye : eyes) {
    const std::string column = eye + "_" + name;
    const std::string description = what + ", " + eye + " eye";
    for (const Field& field : pair(column, unit, description)) fields.push_back(field);
  }
  return fields;
}

// ---- samples ------------------------------------------------------------------------------------

Fields sample_columns() {
  const Field event{"event",
                    Type::choice,
                    "",
                    "eye event that contains the time, a blink before a saccade before a fixation",
                    {"fixation", "saccade", "blink"}};
  return joined(
      {{block(), trial(), time("of the sample")},
       of_both_eyes({{"x", Type::float32, px, "horizontal gaze on the display, null when lost"},
                     {"y", Type::float32, px, "vertical gaze on the display, null when lost"},
                     {"pupil", Type::float32, tracker_units,
                      "pupil size, area or diameter as the block tells, null when lost"}}),
       of_both_eyes({event}),
       {{"recorded", Type::boolean, "", "false for a sample that the library filled into a gap"}}});
}

Fields head_columns() {
  return joined({
      {{"head_x", Type::float32, "mm", "position of the head, x"},
       {"head_y", Type::float32, "mm", "position of the head, y"},
       {"head_z", Type::float32, "mm", "position of the head, z"},
       {"head_rotation_x", Type::float32, degrees, "rotation of the head about x"},
       {"head_rotation_y", Type::float32, degrees, "rotation of the head about y"},
       {"head_rotation_z", Type::float32, degrees, "rotation of the head about z"},
       {"head_marker_flags", Type::uint32, "", "state of the head markers, as recorded"}},
      pair("head_in_space", tracker_units, "head in space, combined"),
      pair_of_both_eyes("head_in_space", tracker_units, "head in space"),
      pair("eye_in_head", tracker_units, "eye in head, cyclopean"),
      pair_of_both_eyes("eye_in_head", tracker_units, "eye in head"),
      pair("head_in_space_resolution", "1/deg", "resolution of head in space, units in a degree"),
      pair("eye_in_head_resolution", "1/deg", "resolution of eye in head, units in a degree"),
  });
}

Fields ellipse_columns() {
  return of_both_eyes(
      {{"ellipse_x", Type::float32, camera_units, "horizontal centre of the pupil ellipse"},
       {"ellipse_y", Type::float32, camera_units, "vertical centre of the pupil ellipse"},
       {"ellipse_major", Type::float32, camera_units, "long axis of the pupil ellipse"},
       {"ellipse_minor", Type::float32, camera_units, "short axis of the pupil ellipse"},
       {"ellipse_angle", Type::float32, degrees, "angle of the pupil ellipse"}});
}

Fields target_columns() {
  return {
      {"target_x", Type::float32, camera_units, "horizontal position of the head target"},
      {"target_y", Type::float32, camera_units, "vertical position of the head target"},
      {"target_distance", Type::float32, "mm", "distance of the head target, the stored word / 10"},
      {"target_flags", Type::uint16, "", "flags of the head target, as recorded"}};
}

std::vector<Group> sample_groups() {
  return {
      {"", "", sample_columns()},
      {"href", "head-referenced position, on a plane 15000 units in front of the eye",
       pair_of_both_eyes("href", href_units, "head-referenced position")},
      {"raw", "raw pupil position in the camera image",
       pair_of_both_eyes("raw", camera_units, "raw pupil position")},
      {"velocity", "velocity of gaze, null where either coordinate is",
       pair_of_both_eyes("velocity", velocity, "velocity of gaze")},
      {"fast_velocity", "the faster, noisier estimate of the velocity of gaze",
       pair_of_both_eyes("fast_velocity", velocity, "velocity of gaze, fast estimate")},
      {"resolution", "angular resolution at gaze, null outside 0.01 to 10000",
       pair("resolution", resolution, "resolution at gaze")},
      {"input", "digital input port", {{"input", Type::uint16, "", "value of the input port"}}},
      {"buttons", "buttons", {{"buttons", Type::uint16, "", "state of the buttons, one bit each"}}},
      {"status", "status word", {{"status", Type::uint16, "", "status word, as recorded"}}},
      {"target", "head target of a third-generation tracker", target_columns()},
      {"head", "head pose of a fourth-generation tracker", head_columns()},
      {"ellipse", "pupil ellipse of a fourth-generation tracker", ellipse_columns()},
  };
}

// ---- events -------------------------------------------------------------------------------------

Fields event_columns() {
  const Field eye{"eye", Type::choice, "", "the eye", {"left", "right"}};
  const Field type{"type", Type::choice, "", "the kind of event", {"fixation", "saccade", "blink"}};
  return joined({
      {block(), trial(), eye, type},
      {{"onset", Type::float64, ms, "time of the first sample, on the tracker's clock"},
       {"offset", Type::float64, ms, "time of the last sample, on the tracker's clock"},
       {"duration", Type::float64, ms,
        "offset - onset + the whole milliseconds of a sample period; negative where the event ends "
        "before it starts"},
       {"x", Type::float32, px, "horizontal mean gaze of a fixation"},
       {"y", Type::float32, px, "vertical mean gaze of a fixation"},
       {"pupil", Type::float32, tracker_units, "mean pupil size of a fixation"}},
      pair("start", px, "gaze at the start of a saccade"),
      pair("end", px, "gaze at the end of a saccade"),
      {{"amplitude", Type::float32, degrees,
        "of a saccade: by the recorded resolution, else duration x average velocity"},
       {"peak_velocity", Type::float32, velocity, "peak velocity"},
       {"average_velocity", Type::float32, velocity, "average velocity"}},
      pair("resolution", resolution, "resolution, mean of start and end"),
      {{"has_blink", Type::boolean, "",
        "of a saccade: a blink of the same eye lies inside it; null for other events"}},
  });
}

Fields event_positions(const std::string& kind, const char* unit, const std::string& what) {
  return joined({pair(kind, unit, "mean " + what + " of a fixation"),
                 pair(kind + "_start", unit, what + " at the start of a saccade"),
                 pair(kind + "_end", unit, what + " at the end of a saccade")});
}

std::vector<Group> event_groups() {
  Fields href = event_positions("href", href_units, "head-referenced position");
  href.push_back({"href_amplitude", Type::float32, degrees,
                  "of a saccade: the angle between its head-referenced start and end"});
  return {{"", "", event_columns()},
          {"href", "head-referenced positions, on a plane 15000 units in front of the eye", href},
          {"raw", "raw pupil positions in the camera image",
           event_positions("raw", camera_units, "raw pupil position")}};
}

// ---- the others ---------------------------------------------------------------------------------

std::vector<Group> message_groups() {
  return {{"",
           "",
           {block(),
            trial(),
            time("of the message"),
            {"text", Type::text, "", "the message; null without a text"}}},
          {"source",
           "where the message stood, when an experiment's log is merged",
           {{"source", Type::choice, "", "where the message stood", {"recording", "log"}}}}};
}

std::vector<Group> input_groups() {
  return {{"",
           "",
           {block(),
            trial(),
            time("of the change"),
            {"type", Type::choice, "", "what changed", {"button", "input"}},
            {"button", Type::int32, "", "number of the button, from 1; null for the input port"},
            {"value", Type::int32, "", "1 pressed, 0 released, or the value of the port"}}}};
}

Fields block_counts() {
  return {
      {"samples", Type::int64, "", "recorded samples"},
      {"filled", Type::int64, "", "samples that the library filled into gaps"},
      {"expected", Type::int64, "", "samples by the rate, from the first to the last"},
      {"left_lost", Type::int64, "",
       "recorded samples without a valid position, left eye; null when it was not recorded"},
      {"right_lost", Type::int64, "",
       "recorded samples without a valid position, right eye; null when it was not recorded"},
      {"fixations", Type::int32, "", "fixations of both eyes that ended in the block"},
      {"saccades", Type::int32, "", "saccades of both eyes that ended in the block"},
      {"blinks", Type::int32, "", "blinks of both eyes that ended in the block"},
  };
}

Fields block_facts() {
  return {
      {"block", Type::int32, "", "number of the recording block, from 1"},
      {"start", Type::float64, ms, "start, on the tracker's clock"},
      {"end", Type::float64, ms, "end; null when no end is recorded"},
      {"rate", Type::float64, "Hz", "samples in a second"},
      {"eyes", Type::choice, "", "the eyes recorded", {"left", "right", "both"}},
      {"has_samples", Type::boolean, "", "whether samples are recorded"},
      {"has_events", Type::boolean, "", "whether events are recorded"},
      {"positions", Type::text, "", "positions of the samples, of `gaze,href,raw`"},
      {"events_in",
       Type::choice,
       "",
       "positions that events were found in",
       {"gaze", "href", "raw"}},
      {"pupil_unit", Type::choice, "", "what a pupil size is", {"area", "diameter"}},
      {"tracking", Type::choice, "", "what the tracker follows", {"pupil", "pupil-cr"}},
      {"filter", Type::int32, "", "filter level of the samples"},
  };
}

std::vector<Group> block_groups() {
  return {{"", "", joined({block_facts(), block_counts()})}};
}

std::vector<Group> trial_groups() {
  return {{"",
           "",
           {{"trial", Type::int32, "", "number of the trial, from 1"},
            {"block", Type::int32, "", "first block that runs while the trial is open"},
            {"start", Type::float64, ms, "start, on the tracker's clock"},
            {"end", Type::float64, ms, "end; null when the recording stops first"},
            {"duration", Type::float64, ms, "end - start"},
            {"samples", Type::int64, "", "recorded samples"},
            {"left_lost_share", Type::float32, "", "share of them without a valid left position"},
            {"right_lost_share", Type::float32, "", "share of them without a valid right position"},
            {"start_text", Type::text, "", "message that opened the trial"},
            {"end_text", Type::text, "", "message that ended the trial"}}}};
}

}  // namespace

const std::vector<Group>& groups_of(Table table) {
  static const std::vector<Group> samples = sample_groups();
  static const std::vector<Group> events = event_groups();
  static const std::vector<Group> messages = message_groups();
  static const std::vector<Group> inputs = input_groups();
  static const std::vector<Group> blocks = block_groups();
  static const std::vector<Group> trials = trial_groups();
  switch (table) {
    case Table::samples:
      return samples;
    case Table::messages:
      return messages;
    case Table::inputs:
      return inputs;
    case Table::blocks:
      return blocks;
    case Table::trials:
      return trials;
    default:
      return events;
  }
}

}  // namespace gzdtables
