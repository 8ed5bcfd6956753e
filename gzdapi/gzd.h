/*
 * gzdapi: access to GZD recordings.
 *
 * Open a file, walk its elements in time order, fetch each as a record, close:
 *
 *     int rv;
 *     GZDFILE *file =
 *         gzd_open_file("trial.gzd", GZD_CONSISTENCY_REPAIR, GZD_LOAD_EVENTS, 1, &rv);
 *     int code;
 *     if (file == NULL) return 1;
 *     while ((code = gzd_get_next_data(file)) != GZD_END_OF_DATA) {
 *       const ALLF_DATA *record = gzd_get_float_data(file);
 *       if (record != NULL && code == GZD_SAMPLE) use(&record->fs);
 *     }
 *     gzd_close_file(file);
 *
 * Conventions
 *  1. Times are milliseconds of the tracker's clock, positions and their missing values as told in
 *     gzd_data.h.
 *  2. The library owns every record it hands out. A record stays valid, and its message text with
 *     it, until the next call on the same handle; nothing of a file is valid after its close.
 *     Records are to be read, not written.
 *  3. Handles must not be null, except where said. Out-parameters must not be null, except where
 *     said.
 *  4. No exception crosses this interface. A failure is a return code or a null pointer, and a
 *     line through the log function; memory that runs out is such a failure too.
 *  5. Library and handles keep process-wide state without locks: use them from one thread.
 *  6. Opening reads the whole file once. Walking costs constant time an element; what costs more
 *     says so.
 */
#ifndef GZDAPI_GZD_H
#define GZDAPI_GZD_H

#include "gzd_data.h"

#if defined(_WIN32)
#define GZD_API
#elif defined(__GNUC__)
#define GZD_API __attribute__((visibility("default")))
#else
#define GZD_API /* marks what the library exports */
#endif

#if defined(__GNUC__)
#define GZD_MUST_CHECK __attribute__((warn_unused_result))
#define GZD_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define GZD_MUST_CHECK          /* marks functions whose result must be looked at */
#define GZD_PRINTF(text, first) /* marks functions that format as printf does */
#endif

#ifdef __cplusplus
struct _GZDFILE {};
extern "C" {
#else
struct _GZDFILE;
#endif

/* An open recording. Callers never look inside. */
typedef struct _GZDFILE GZDFILE;

/* ---- opening, closing, logging --------------------------------------------------------------- */

/* `consistency` of the open functions: take the file as it is. */
#define GZD_CONSISTENCY_NONE 0
/* `consistency`: report faults; re-time eye events outside blocks, drop samples outside blocks. */
#define GZD_CONSISTENCY_CHECK 1
/* `consistency`: also repair: fill gaps, pair blinks, mend fixations. */
#define GZD_CONSISTENCY_REPAIR 2
/* Flag of `consistency`: a damaged file opens with all that comes before the damage. */
#define GZD_OPEN_FAILSAFE 4
/* Flag of `consistency`: never shift large times (see gzd_get_float_data). */
#define GZD_OPEN_NO_TIME_SHIFT 8
/* Flag of `consistency`: a number at the start of a message is an offset that is taken from its
   time and from its text. */
#define GZD_OPEN_MESSAGE_OFFSETS 16

/* `loadevents` of the open functions: eye events, messages, buttons, input. */
#define GZD_LOAD_EVENTS 1
/* `loadevents`: merge the experiment's message log as well. */
#define GZD_LOAD_MESSAGE_LOG 2

/*
 * Opens the recording `fname`, plain or compressed, and indexes it.
 *
 * consistency: a GZD_CONSISTENCY_ level, or-ed with GZD_OPEN_ flags.
 * loadevents:  GZD_LOAD_ bits; 0 hands out recording blocks and samples only.
 * loadsamples: 0 leaves samples out.
 * rv:          receives 0 on success and -1 on failure.
 *
 * Returns the handle, to be closed with gzd_close_file, or null: the file cannot be opened, is not
 * a regular file, not a recording, or damaged (GZD_OPEN_FAILSAFE opens it all the same). The
 * reason has then gone to the log function, and errno is the system's part in it, or 0.
 *
 * Cost: linear in the file; memory of 16 bytes an event, 24 for the samples between two events, or
 * up to 10 for each sample where times or lengths of records are irregular, about 100 a boundary of
 * a block.
 */
GZD_API GZDFILE* gzd_open_file(const char* fname, int consistency, int loadevents, int loadsamples,
                               int* rv) GZD_MUST_CHECK;

/* The same with a configuration, which is copied; null keeps that of the last open. All open files
   share the resolution and debug settings of the last one opened. */
GZD_API GZDFILE* gzd_open_file_ex(const char* fname, int consistency, int loadevents,
                                  int loadsamples, CONFIG* config, int* rv) GZD_MUST_CHECK;

/* Closes a file and frees all that belongs to it. Null is allowed. Returns 0. */
GZD_API int gzd_close_file(GZDFILE* ef);

/* Names the experiment's message log for files opened from now on; the name is copied. An empty
   name means no log; null goes back to "tq_messages.log" in the recording's own directory. Returns
   0, or -1 without memory. */
GZD_API int gzd_set_extra_message_file(const char* fname);

/* Sets the function that receives the library's messages: `void log(const char *message)`, the
   message finished, with its own newlines. Null restores standard output. It is called in the
   middle of other calls: it must not call a function with the handle that is being worked on. */
GZD_API void gzd_set_log_function(void* lfcn);

/* Sets the function that receives the few notices that are told always and not logged; the text is
   finished, with its own newline, and lives as long as the call. Null restores standard output. */
GZD_API void gzd_set_notice_function(void (*function)(const char* notice));

/* Formats a message and hands it to the log function, or writes it to standard output, no newline
   added. Returns 0. A finished message of 499 characters and more ends the process with a line on
   standard error. The library's own messages are clipped where a name or an identifier would make
   them as long. */
GZD_API int print_log(const char* fmt, ...) GZD_PRINTF(1, 2);

/* The library's version, platform and build date; a constant. */
GZD_API const char* gzd_get_version(void);

/* ---- walking --------------------------------------------------------------------------------- */

/* Steps to the next element in time order, messages of the experiment's log merged in. Returns its
   code: GZD_SAMPLE, GZD_RECORDING or an event's type; GZD_END_OF_DATA when nothing is left. A code
   without a name in gzd_data.h is an element of a kind that the library cannot fetch. */
GZD_API int gzd_get_next_data(GZDFILE* ef);

/* Fetches the element just announced. Which member of the record holds is told by its code. Null
   before the first element, for a kind that cannot be fetched, and for a record that cannot be
   read again (logged): that ends the walk, and gzd_get_system_error has the reason. The record is
   for reading; it stays until the next call with this file.

   When the recording holds times of 0x3FFFFFFF ms and above, its times are shifted to begin near
   0, unless GZD_OPEN_NO_TIME_SHIFT was given; the first record fetched decides. */
GZD_API ALLF_DATA* gzd_get_float_data(GZDFILE* ef);

/* Why the system has kept the library from doing what was asked of this file: the first reason, a
   value of errno (EIO when a read failed, ENODATA when a file has become shorter since it was
   opened, ENOMEM when memory ran out), or 0 when there was none.
   It stays until the file is closed. With a reason, an end of data may have come early and a value
   may be that of a failure: asked once, after the last element, it tells whether all of them were
   what the recording holds. */
GZD_API int gzd_get_system_error(GZDFILE* ef);

/* What that reason is about when it is not the recording itself: the path of the message log, or
   the directory of temporary files (that of the environment's TMPDIR, else /tmp), where compressed
   recordings are inflated; else null. A null handle asks of errno after an open that failed. Valid
   until the file is closed or the environment changes. */
GZD_API const char* gzd_get_failed_place(GZDFILE* ef);

/* The sample at `time` (ms), or null when there is none at exactly that time. A sample that shares
   its time with an event or a boundary of a block may be missed. The walk stays where it is. Cost:
   logarithmic. */
GZD_API ALLF_DATA* gzd_get_sample_close_to_time(GZDFILE* ef, unsigned int time);

/* Number of elements of the walk, messages of the experiment's log included. */
GZD_API unsigned int gzd_get_element_count(GZDFILE* ef);

/* One-based position of the element last announced; 0 before the first. */
GZD_API unsigned int gzd_get_element_index(GZDFILE* ef);

/* Where the element last announced comes from: GZD_ORIGIN_. A sample that the library filled in
   looks like one whose values are missing, and an event that it inserted like one without values;
   this tells. */
GZD_API int gzd_get_element_origin(GZDFILE* ef);

/* Steps over the samples that come next, as so many calls of gzd_get_next_data would: the call that
   follows announces the first element that is none. Returns how many; `filled`, when not null, gets
   how many of them the library filled in. While messages of the experiment's log are merged, none
   is stepped over. Cost: hardly any; with `filled`, a look at each sample's entry of the index. */
GZD_API unsigned int gzd_skip_samples(GZDFILE* ef, unsigned int* filled);

/* Steps over the samples that come next, at most `most` of them, and puts gaze and pupil sizes into
   columns: several times faster than as many calls of gzd_get_next_data and gzd_get_float_data.
   They are samples of the recording, none filled in, of the same block and with the same flags, but
   for SMP_HALF_MS, as the sample that was fetched before. Returns how many there were. 0 does not
   tell that no sample follows: walk on by those two functions, then ask again. It is always 0 right
   after another element was fetched, and while times may be shifted or messages of the experiment's
   log are merged. */
GZD_API unsigned int gzd_get_gaze(GZDFILE* ef, unsigned int most, const GZD_GAZE_COLUMNS* columns);

/* Goes back to before the first element: walking from there gives what it gave after opening. No
   trial is current; trials, bookmarks and what was set for the file stay. */
GZD_API void gzd_rewind(GZDFILE* ef);

/* A record as an event (messages, buttons and input included), a sample or a recording record;
   null when it is of another kind. The kind of a record that an open file has handed out is known;
   any other pointer is judged by the `type` of an event. */
GZD_API FEVENT* gzd_get_event(ALLF_DATA* allfdata);
GZD_API FSAMPLE* gzd_get_sample(ALLF_DATA* allfdata);
GZD_API RECORDINGS* gzd_get_recording(ALLF_DATA* allfdata);

/* The element of the recording at the current position, when it is an event, a sample or a
   recording record; else null. Messages of the experiment's log are not reached this way. */
GZD_API FEVENT* gzd_get_event_data(GZDFILE* ef);
GZD_API FSAMPLE* gzd_get_sample_data(GZDFILE* ef);
GZD_API RECORDINGS* gzd_get_recording_data(GZDFILE* ef);

/* Chooses the velocities computed for each sample handed out from now on: GZD_VELOCITY_ bits.
   GZD_VELOCITY_ALL after opening; fields of a kind left out stay NOT_RECORDED. Leaving them all
   out makes fetching samples several times faster. */
GZD_API void gzd_set_velocity_kinds(GZDFILE* ef, unsigned int kinds);

/* ---- file facts ------------------------------------------------------------------------------ */

/* Copies the preamble, lines that begin with "** ", into `buffer` of `length` bytes: at most
   length - 1 characters and a NUL. Nothing is written when `length` is below 1. Returns 0. */
GZD_API int gzd_get_preamble_text(GZDFILE* ef, char* buffer, int length);

/* Length of the preamble text, its NUL included; 0 without a preamble. */
GZD_API int gzd_get_preamble_text_length(GZDFILE* ef);

/* Samples per second of the recording block that the walk is in, after a jump that of the element
   jumped to; 0.0 outside blocks. Of a block whose start record names no rate that is known it is
   250. */
GZD_API float gzd_get_sample_per_second(GZDFILE* ef);

/* Time between samples (ms) of that block, cut to an integer (0 at 2000 Hz); 0 outside blocks. */
GZD_API int gzd_get_sample_interval(GZDFILE* ef);

/* The same, not cut: 0.5 at 2000 Hz. */
GZD_API float gzd_get_sample_interval_ex(GZDFILE* ef);

/* Revision of the file format, 0 when the preamble names none. */
GZD_API int gzd_get_revision(GZDFILE* ef);

/* Tracker generation, GZD_TRACKER_. */
GZD_API int gzd_get_ovilo_revision(GZDFILE* ef);

/* Filter level of the samples, as the last block start in the file gave it. */
GZD_API int get_filter_level_for_sample(GZDFILE* ef);

/* Bit 0: the recording holds input events; bit 1: its samples hold input values. */
GZD_API int gzd_get_input_data_availibity(GZDFILE* ef);

/* ---- findings -------------------------------------------------------------------------------- */

/* Number of findings: what was cut, damaged, missing, repaired or odd in the recording, as far as
   reading it and the checks of the level it was opened with have seen. All are made by opening. */
GZD_API unsigned int gzd_get_finding_count(GZDFILE* ef);

/* Copies finding `n` (from 0, in the order in which they were found) to `finding`. Returns 0, or -1
   when there is no such finding or `finding` is null. */
GZD_API int gzd_get_finding(GZDFILE* ef, unsigned int n, GZD_FINDING* finding);

/* ---- trials ---------------------------------------------------------------------------------- */

/*
 * A trial is a stretch of the walk. Without identifiers each recording block is one. They are
 * collected at the first call that needs them, at the cost of one walk over the index; collecting
 * moves the walk: to its beginning, or, with identifiers, to its end when the last trial has no
 * closing message. Jump to a trial before you walk on: after a jump, to a bookmark too, the message
 * log goes on at the time of the element jumped to. With identifiers, a trial that the end of a
 * block or the start of the next closes has duration 0: take `endtime` minus `starttime`.
 */

/* Sets the texts that start and end a trial, and collects anew. A message that contains `start`
   opens a trial, one that contains `end` closes it; null for either leaves it out. `start` of the
   form "inPut_type_N" cuts by input values instead: N opens a trial, the number in `end` closes
   it. Each call decides anew how trials are cut. The strings are borrowed: they must live until the
   file is closed or others are set. Returns 0. */
GZD_API int gzd_set_trial_identifier(GZDFILE* ef, char* start, char* end);

/* The identifiers in force, or null. */
GZD_API char* gzd_get_start_trial_identifier(GZDFILE* ef);
GZD_API char* gzd_get_end_trial_identifier(GZDFILE* ef);

/* Number of trials. */
GZD_API int gzd_get_trial_count(GZDFILE* ef);

/* Moves the walk to the start of trial `trial` (from 0), of the next or previous trial, or of the
   first trial with the given start or end time (ms). Returns 0, or -1 when there is no such trial:
   the walk then stays where it is. */
GZD_API int gzd_jump_to_trial(GZDFILE* ef, int trial);
GZD_API int gzd_goto_next_trial(GZDFILE* ef);
GZD_API int gzd_goto_previous_trial(GZDFILE* ef);
GZD_API int gzd_goto_trial_with_start_time(GZDFILE* ef, unsigned int start_time);
GZD_API int gzd_goto_trial_with_end_time(GZDFILE* ef, unsigned int end_time);

/* Copies the header of the current trial to `trial`. Returns 0, or -1 when `trial` is null or no
   trial is current. */
GZD_API int gzd_get_trial_header(GZDFILE* ef, TRIAL* trial);

/* ---- bookmarks ------------------------------------------------------------------------------- */

/* Marks the current position and fills `bm`. Returns 0, or -1 when `bm` is null or the walk is at
   its end. A position that is marked already returns 0 and leaves `bm` as it was. */
GZD_API int gzd_set_bookmark(GZDFILE* ef, BOOKMARK* bm);

/* Removes a bookmark; `bm` itself stays the caller's. Returns 0, or -1 when it is null or unknown.
 */
GZD_API int gzd_free_bookmark(GZDFILE* ef, BOOKMARK* bm);

/* Moves the walk to a bookmark. Returns 0, or -1 when it is null or unknown. */
GZD_API int gzd_goto_bookmark(GZDFILE* ef, BOOKMARK* bm);

/* Moves the walk to the bookmark set after or before the current one. Returns 0, or -1 when there
   is none: the walk then stays where it is. */
GZD_API int gzd_goto_next_bookmark(GZDFILE* ef);
GZD_API int gzd_goto_previous_bookmark(GZDFILE* ef);

/* ---- raw camera data ------------------------------------------------------------------------- */

/*
 * All take a sample that was handed out by the same file, and an eye (GZD_LEFT_EYE or
 * GZD_RIGHT_EYE). Results through `rv` are two elements: x and y in camera pixels, or width and
 * height of a bounding box in pixels. A position that cannot be given is a pair of MISSING_DATA, a
 * dimension a pair of MISSING_DATA_INT. Areas are pixels, 0 when there are none. Prescaler and
 * tracking window are those of the trial that contains the sample's time.
 */

/* Area of the pupil. */
GZD_API UINT32 gzd_get_uncorrected_pupil_area(GZDFILE* gzd, FSAMPLE* sam, int eye);

/* Centre of the pupil. */
GZD_API void gzd_get_uncorrected_raw_pupil(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv);

/* Area of the corneal reflection. */
GZD_API UINT32 gzd_get_uncorrected_cr_area(GZDFILE* gzd, FSAMPLE* sam, int eye);

/* Centre of the corneal reflection. */
GZD_API void gzd_get_uncorrected_raw_cr(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv);

/* Area of the second corneal reflection. */
GZD_API UINT32 gzd_get_uncorrected_cr2_area(GZDFILE* gzd, FSAMPLE* sam, int eye);

/* Centre of the second corneal reflection. */
GZD_API void gzd_get_uncorrected_raw_cr2(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv);

/* Bounding box of the pupil. */
GZD_API void gzd_get_pupil_dimension(GZDFILE* gzd, FSAMPLE* sam, int eye, UINT32* rv);

/* Bounding box of the corneal reflection. */
GZD_API void gzd_get_cr_dimension(GZDFILE* gzd, FSAMPLE* sam, UINT32* rv);

/* Centre of the camera's tracking window, in camera pixels. */
GZD_API void gzd_get_window_position(GZDFILE* gzd, FSAMPLE* sam, UINT32* rv);

/* Pupil minus corneal reflection, the pupil corrected for the part that the reflection covers. Of
   missing inputs it is the formula's value, not a missing pair. */
GZD_API void gzd_get_pupil_cr(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv);

/* All of the above at once, which costs a fraction of asking for each. */
GZD_API void gzd_get_raw_eye(GZDFILE* gzd, FSAMPLE* sam, int eye, GZD_RAW_EYE* raw);
/* The same of both eyes, to raw[GZD_LEFT_EYE] and raw[GZD_RIGHT_EYE], for little more. */
GZD_API void gzd_get_raw_eyes(GZDFILE* gzd, FSAMPLE* sam, GZD_RAW_EYE* raw);

/* ---- pixels per degree ----------------------------------------------------------------------- */

/* Sets the physical layout of the display, for the whole process: the distance from the eye to the
   top and the bottom of the screen (mm), the edges of the screen in mm and in pixels (left, top,
   right, bottom). Clears the smoothing of gzd_calculate_ppd. Returns 0. */
GZD_API int gzd_compute_physical_setup(float simulation_screen_distance,
                                       float simulation_screen_distance_bot, float screen_phys_l,
                                       float screen_phys_t, float screen_phys_r,
                                       float screen_phys_b, float screen_pixel_l,
                                       float screen_pixel_t, float screen_pixel_r,
                                       float screen_pixel_b);

/* The resolution (pixels per degree) at the gaze of one eye, smoothed over the last ten valid
   samples of that eye, to *rx and *ry, in multiples of 0.1. `hpixel` and `vpixel` are the width and
   height of the screen in pixels. MISSING_DATA when the sample lacks gaze or head-referenced
   positions, or a valid one. */
GZD_API void gzd_calculate_ppd(float hpixel, float vpixel, FSAMPLE* f, int eye, double* rx,
                               double* ry);

#ifdef __cplusplus
}
#endif

#endif
