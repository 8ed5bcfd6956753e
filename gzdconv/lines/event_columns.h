// The columns after the times of an eye event's line.
#ifndef GZDCONV_EVENT_COLUMNS_H
#define GZDCONV_EVENT_COLUMNS_H

#include <cstdint>

#include "gzd_data.h"

namespace gzdconv {

// Average position, pupil size and, on demand, resolution of a fixation, whose positions are of
// `position_type` (GZD_POSITION_).
void print_fixation_columns(const FEVENT& event, int position_type);

// Ends, amplitude, peak velocity and, on demand, resolution of a saccade of `duration` ms.
void print_saccade_columns(const FEVENT& event, int position_type, std::uint32_t duration);

// Names and values of the columns of head and eye in space.
void print_extra_header();
void print_exended_event_data(const FEVENT& event);

}  // namespace gzdconv

#endif
