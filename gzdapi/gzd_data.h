/*
 * The public data model: the records that the library hands out, and the names of every code,
 * flag bit and special value in them. Plain C, self-contained.
 *
 * Units: times are milliseconds of the tracker's clock; gaze positions are display pixels;
 * head-referenced positions are units on a plane 15000 units in front of the eye; resolutions are
 * units per degree of visual angle; velocities are degrees per second. Arrays of two hold the left
 * eye at 0 and the right eye at 1.
 *
 * Two values stand for "no value": MISSING_DATA where a value was recorded but is not valid (a
 * blink, a lost track), NOT_RECORDED where the field or the eye is absent from the record.
 */
#ifndef GZDAPI_GZD_DATA_H
#define GZDAPI_GZD_DATA_H

#include "gzdtypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- special values -------------------------------------------------------------------------- */

#define MISSING_DATA 100000000.0f  /* recorded, but not valid */
#define MISSING_DATA_INT 100000000 /* an integer pair that cannot be given */
#define NOT_RECORDED (-32768.0f)   /* field or eye absent from the record */
#define NOT_RECORDED_WORD 0x8000   /* the same for `errors`, `input` and `htype` of a sample */

/* ---- codes of the elements (gzd_get_next_data, `type` of events) ----------------------------- */

#define GZD_END_OF_DATA 0     /* no element is left */
#define GZD_START_PARSE 1     /* eye events are parsed from here on */
#define GZD_END_PARSE 2       /* eye events are parsed up to here */
#define GZD_START_BLINK 3     /* a blink begins */
#define GZD_END_BLINK 4       /* a blink ends */
#define GZD_START_SACCADE 5   /* a saccade begins */
#define GZD_END_SACCADE 6     /* a saccade ends */
#define GZD_START_FIXATION 7  /* a fixation begins */
#define GZD_END_FIXATION 8    /* a fixation ends */
#define GZD_FIXATION_UPDATE 9 /* a fixation goes on */
#define GZD_BREAK_PARSE 10    /* parsing is interrupted */
#define GZD_START_SAMPLES 15  /* samples are recorded from here on */
#define GZD_END_SAMPLES 16    /* samples are recorded up to here */
#define GZD_START_EVENTS 17   /* events are recorded from here on */
#define GZD_END_EVENTS 18     /* events are recorded up to here */
#define GZD_MESSAGE 24        /* a message */
#define GZD_BUTTON 25         /* a button changes */
#define GZD_INPUT 28          /* the input port changes */
#define GZD_RECORDING 30      /* a recording block begins or ends */
#define GZD_SAMPLE 200        /* a sample */

/* ---- eyes ------------------------------------------------------------------------------------ */

#define GZD_LEFT_EYE 0  /* the left eye: index into arrays of two, `eye` of events */
#define GZD_RIGHT_EYE 1 /* the right eye */

#define GZD_BLOCK_NO_EYE 0 /* `eye` of recording records: neither */
#define GZD_BLOCK_LEFT 1   /* left eye only */
#define GZD_BLOCK_RIGHT 2  /* right eye only */
#define GZD_BLOCK_BOTH 3   /* both eyes */

/* ---- position types (`pos_type` of recording records, choice of sample columns) -------------- */

#define GZD_POSITION_PUPIL 64 /* raw pupil position */
#define GZD_POSITION_HREF 128 /* head-referenced position */
#define GZD_POSITION_GAZE 192 /* gaze position */

/* The distance of the plane of head-referenced positions from the eye, in their units. */
#define GZD_HREF_DISTANCE 15000.0

/* ---- `flags` of samples, `sflags` of recording records --------------------------------------- */

#define SMP_LEFT 0x8000          /* left-eye values present */
#define SMP_RIGHT 0x4000         /* right-eye values present */
#define SMP_TIME_ABSOLUTE 0x2000 /* the record holds a whole time, not an increment */
#define SMP_PUPIL_POS 0x1000     /* raw pupil position */
#define SMP_HREF 0x0800          /* head-referenced position */
#define SMP_GAZE 0x0400          /* gaze position */
#define SMP_RESOLUTION 0x0200    /* angular resolution */
#define SMP_PUPIL_SIZE 0x0100    /* pupil size */
#define SMP_STATUS 0x0080        /* status word, in `errors` */
#define SMP_INPUT 0x0040         /* digital input word */
#define SMP_BUTTONS 0x0020       /* button word */
#define SMP_HEAD_DATA 0x0010     /* words in `hdata` */
#define SMP_EXTENDED 0x0008      /* head pose and ellipse blocks */
#define SMP_SKIP_BLOCKS 0x0004   /* blocks that the reader skips */
#define SMP_HALF_MS 0x0002       /* half a millisecond after its integer time */
#define SMP_IS_SAMPLE 0x0001     /* set in every sample record on disk */

/* ---- `errors` of samples: what the tracker tells of the eyes --------------------------------- */

#define GZD_STATUS_INTERPOLATED 0x1000   /* the sample is interpolated */
#define GZD_STATUS_RIGHT_RECOVERY 0x0800 /* the corneal reflection of the right eye comes back */
#define GZD_STATUS_LEFT_RECOVERY 0x0400  /* the same of the left eye */
#define GZD_STATUS_RIGHT_MISSING 0x0200  /* the right eye has no corneal reflection */
#define GZD_STATUS_LEFT_MISSING 0x0100   /* the left eye has none */
#define GZD_STATUS_CALIBRATION 0x0002    /* calibration warning, of samples with a head pose */

/* ---- `htype` of samples: what `hdata` holds -------------------------------------------------- */

#define GZD_HTYPE_TARGET_ONE_EYE 182     /* a head target, seen by the camera of one eye */
#define GZD_HTYPE_TARGET_TWO_EYES 183    /* the same for two eyes */
#define GZD_HTYPE_SECOND_CR_ONE_EYE 196  /* a second corneal reflection of one eye */
#define GZD_HTYPE_SECOND_CR_TWO_EYES 200 /* the same of two eyes */

/* ---- the fourth word of a head target; the seventh has the last four of the second eye ------- */

#define GZD_TARGET_MISSING 0x4000       /* no target is seen */
#define GZD_TARGET_EXTREME_ANGLE 0x2000 /* it is turned too far */
#define GZD_TARGET_NEAR_EYE 0x1000      /* it is too near to an eye */
#define GZD_TARGET_TOO_CLOSE 0x0800     /* it is too close to the camera */
#define GZD_TARGET_TOO_FAR 0x0400       /* it is too far from the camera */
#define GZD_TARGET_TOP 0x0080           /* it is at the top edge of the image */
#define GZD_TARGET_BOTTOM 0x0040        /* at the bottom edge */
#define GZD_TARGET_LEFT 0x0020          /* at the left edge */
#define GZD_TARGET_RIGHT 0x0010         /* at the right edge */
#define GZD_TARGET_EYE_TOP 0x0008       /* the eye is at the top edge */
#define GZD_TARGET_EYE_BOTTOM 0x0004    /* at the bottom edge */
#define GZD_TARGET_EYE_LEFT 0x0002      /* at the left edge */
#define GZD_TARGET_EYE_RIGHT 0x0001     /* at the right edge */

/* ---- `headMarkerFlags` of samples ------------------------------------------------------------ */

#define GZD_HEAD_MARKER_IMU_ONLY 0x0008 /* head pose from the inertial sensor only */
#define GZD_HEAD_MARKER_AGE3 0x0004     /* markers are three samples old */
#define GZD_HEAD_MARKER_MISSING 0x0002  /* markers missing */
#define GZD_HEAD_MARKER_WARNING 0x0001  /* marker warning */

/* ---- `read` of events: the fields that the record held --------------------------------------- */

#define EVT_START_TIME 0x0001       /* start time; also resolution, pupil or velocity there */
#define EVT_END_VALUES 0x0002       /* resolution, pupil size or velocity at the end */
#define EVT_AVERAGE_VALUES 0x0004   /* mean pupil size, average or peak velocity */
#define EVT_START_POSITION 0x0008   /* position at the start, of the kinds below */
#define EVT_END_POSITION 0x0010     /* position at the end */
#define EVT_AVERAGE_POSITION 0x0020 /* mean position */
#define EVT_END_TIME 0x0040         /* end time */
#define EVT_PUPIL_SIZE 0x0080       /* any of the pupil sizes */
#define EVT_VELOCITY 0x0100         /* any of the velocities */
#define EVT_RESOLUTION 0x0200       /* any of the resolutions */
#define EVT_PUPIL_POS 0x0400        /* any of the positions is a raw pupil position */
#define EVT_HREF 0x0800             /* any of them is head-referenced */
#define EVT_GAZE 0x1000             /* any of them is a gaze position */
#define EVT_FLAGS 0x2000            /* flags word */
#define EVT_HEAD_POSE 0x4000        /* head in space, eye in head, head rotation and position */

/* ---- `record_type` and `state` of recording records ------------------------------------------ */

#define GZD_RECORD_SAMPLES 1 /* the block holds samples */
#define GZD_RECORD_EVENTS 2  /* the block holds events */
#define GZD_RECORD_BOTH 3    /* the block holds samples and events */

#define GZD_BLOCK_END 0   /* the block ends */
#define GZD_BLOCK_START 1 /* the block begins */

/* ---- tracker generations (gzd_get_ovilo_revision) -------------------------------------------- */

/* The numbers rise with the generations. */
#define GZD_TRACKER_OTHER 1   /* none of these */
#define GZD_TRACKER_KESTREL 2 /* the second generation */
#define GZD_TRACKER_FALCON 3  /* the third: head targets */
#define GZD_TRACKER_OSPREY 4  /* the fourth: head poses, scaled pupil sizes */

/* ---- kinds of velocity, for gzd_set_velocity_kinds ------------------------------------------- */

#define GZD_VELOCITY_NONE 0x00      /* no velocities */
#define GZD_VELOCITY_GAZE 0x01      /* velocity of gaze */
#define GZD_VELOCITY_HREF 0x02      /* velocity of head-referenced positions */
#define GZD_VELOCITY_RAW 0x04       /* velocity of raw pupil positions */
#define GZD_VELOCITY_FAST_GAZE 0x08 /* the faster estimate, of gaze */
#define GZD_VELOCITY_FAST_HREF 0x10 /* the faster estimate, of head-referenced positions */
#define GZD_VELOCITY_FAST_RAW 0x20  /* the faster estimate, of raw pupil positions */
#define GZD_VELOCITY_ALL 0x3F       /* all six kinds */

/* ---- where elements come from (gzd_get_element_origin) --------------------------------------- */

#define GZD_ORIGIN_NONE 0   /* no element has been announced */
#define GZD_ORIGIN_RECORD 1 /* a record of the recording */
#define GZD_ORIGIN_GAP 2    /* a sample that the library filled in where none was recorded */
#define GZD_ORIGIN_REPAIR 3 /* an event that the library's repairs inserted */
#define GZD_ORIGIN_LOG 4    /* a message of the experiment's log */

/* ---- findings (gzd_get_finding) -------------------------------------------------------------- */

/* What a finding tells, with what its members mean beyond GZD_FINDING. Findings marked (repair) are
   made at GZD_CONSISTENCY_REPAIR only, those marked (check) from GZD_CONSISTENCY_CHECK on, those
   marked (fail-safe) with GZD_OPEN_FAILSAFE. */
enum GZD_FINDING_KIND {
  /* (fail-safe) The file ends without the closing tag of its records: reading stopped at `place`,
     after the last whole record. `count`: bytes from there to the end, of compressed recordings
     the inflated ones and those that were not inflated. `start`, `end`: the time of the last
     element before. */
  GZD_FINDING_CUT = 1,
  /* (fail-safe) The record at `place` cannot be read: reading stopped there. Members as above. */
  GZD_FINDING_DAMAGE = 2,
  /* (fail-safe) The system could not read on: reading stopped at `place`. `detail`: its reason, a
     value of errno. Members as above. */
  GZD_FINDING_READ_ERROR = 3,
  /* Bytes after the closing tag of the records, from `place` on, were not read. `count`: how many.
     `start`, `end`: the time of the last element before. */
  GZD_FINDING_UNREAD = 4,
  /* Records from `place` on lie past the library's limit of 2 GB and were not read. Members as
     above. */
  GZD_FINDING_TOO_LARGE = 5,

  /* (repair) Samples were missing between those at `start` and `end`; `count` were filled in. */
  GZD_FINDING_GAP_FILLED = 6,
  /* (repair) Samples are missing between those at `start` and `end`, too many to be filled in.
     `count`: how many. Also before the first sample of a block that begins at `start`. */
  GZD_FINDING_GAP_LEFT = 7,
  /* (repair) Samples were missing between the start of a block and its first sample, at `end`;
     `count` were filled in. */
  GZD_FINDING_BLOCK_START_FILLED = 8,
  /* (repair) The first samples of a block, up to `end`, do not follow each other as its rate says;
     the rate is believed. `detail`: their distance in half-milliseconds. */
  GZD_FINDING_PERIOD_MISMATCH = 9,
  /* (repair) `count` samples follow the one before sooner than the rate says. No times. */
  GZD_FINDING_PERIODS_SHORTER = 10,
  /* (repair) `count` samples follow the one before later than the rate says. No times. */
  GZD_FINDING_PERIODS_LONGER = 11,
  /* (check) `count` samples from `start` to `end` lie in no block; they were dropped. */
  GZD_FINDING_SAMPLES_DROPPED = 12,
  /* The last sample of a block, at `start`, lies more than two sample periods before the block's
     end, at `end`; `start` is the block's own where it has no sample. `count`: periods between. */
  GZD_FINDING_SAMPLES_END_EARLY = 13,

  /* (check) The end of a block and the start of the next, both at `start`, changed places because
     samples stood between them. */
  GZD_FINDING_BOUNDARIES_SWAPPED = 14,
  /* The block at `start` names no rate that the library knows: 250 Hz is taken. `detail`: the rate
     that it names, cut to an integer; 0 when it names none. */
  GZD_FINDING_RATE_ASSUMED = 15,
  /* (check) `count` messages from `start` on, written for the block that follows, were moved after
     the end of theirs, at `end`. */
  GZD_FINDING_MESSAGES_MOVED = 16,

  /* (check) An eye event recorded at `start` was given the time `end`. `detail`: its type. */
  GZD_FINDING_EVENT_RETIMED = 17,
  /* (check) A start of blink was inserted at `start`. */
  GZD_FINDING_BLINK_START_INSERTED = 18,
  /* (repair) Two blinks inside one saccade were made one: the first ended at `start`, the second
     began at `end`. */
  GZD_FINDING_BLINKS_MERGED = 19,
  /* A start of an eye event at `start` without an end, or an end without a start. `detail`: its
     type. */
  GZD_FINDING_UNPAIRED_EVENT = 20,
  /* A fixation that starts at `start` ends before that, at `end`. */
  GZD_FINDING_FIXATION_ENDS_FIRST = 21,
  /* (fail-safe) An event without a type or a time was skipped. `detail`: its type. */
  GZD_FINDING_EVENT_SKIPPED = 22,
  /* An event holds a field of a code that the library does not know; what follows it in the record
     may be wrong. `detail`: the code. */
  GZD_FINDING_UNKNOWN_FIELD = 23,
  /* An event of a kind that the library cannot fetch. `detail`: its type. */
  GZD_FINDING_UNKNOWN_KIND = 24,
  /* A later piece of a long message without its first piece was dropped. */
  GZD_FINDING_MESSAGE_PIECE_DROPPED = 25,

  /* The experiment's message log can be read, but holds no sync line or does not end with its
     closing line: none of it was merged. */
  GZD_FINDING_LOG_LEFT_OUT = 26,

  GZD_FINDING_KINDS = 27 /* past the last kind */
};

/* ---- records --------------------------------------------------------------------------------- */

/* A text with its length. `c` is the first character; the text goes on after it in memory and is
   followed by a NUL. `len` stops at 32767, the text of a long message does not. */
typedef struct {
  INT16 len; /* length of the text */
  char c;    /* its first character */
} LSTRING;

/* One measurement of the tracker at one instant. */
typedef struct {
  UINT32 time;                            /* ms */
  float px[2], py[2];                     /* raw pupil position */
  float hx[2], hy[2];                     /* head-referenced position */
  float pa[2];                            /* pupil size, area or diameter */
  float gx[2], gy[2];                     /* gaze position */
  float rx, ry;                           /* angular resolution */
  float gxvel[2], gyvel[2];               /* gaze velocity */
  float hxvel[2], hyvel[2];               /* head-referenced velocity */
  float rxvel[2], ryvel[2];               /* raw velocity */
  float fgxvel[2], fgyvel[2];             /* fast gaze velocity */
  float fhxvel[2], fhyvel[2];             /* fast head-referenced velocity */
  float frxvel[2], fryvel[2];             /* fast raw velocity */
  INT16 hdata[8];                         /* head target, or camera data, as `htype` tells */
  UINT16 flags;                           /* SMP_ bits: the fields that the record held */
  UINT16 input;                           /* digital inputs, NOT_RECORDED_WORD if absent */
  UINT16 buttons;                         /* button state */
  INT16 htype;                            /* kind and count of these words */
  UINT16 errors;                          /* status word */
  float eyeInHeadX[3], eyeInHeadY[3];     /* eye in head: left, right, cyclopean */
  UINT32 headMarkerFlags;                 /* state of the head markers */
  float headRotation[3], headPosition[3]; /* of the head: x, y, z */
  float headInSpaceX, headInSpaceY;       /* head in space, combined */
  float unused_headInSpaceX[2], unused_headInSpaceY[2]; /* head in space: left, right */
  float hrgx, hrgy;                                     /* head-referenced gaze (resolution) */
  float ergx, ergy;                                     /* eye-referenced gaze (resolution) */
  float ex[2], ey[2];                                   /* centre of the pupil ellipse */
  float emajor[2], eminor[2];                           /* axes of the pupil ellipse */
  float eangle[2];                                      /* angle of the pupil ellipse */
} FSAMPLE;

/* An eye event, a message, a button or an input change. Fields that the record does not hold are
   0; `read` tells which it holds. */
typedef struct {
  UINT32 time;           /* 0; where times are shifted, 0 minus the time of the first record */
  INT16 type;            /* GZD_START_BLINK ... GZD_INPUT */
  UINT16 read;           /* EVT_ bits */
  UINT32 sttime, entime; /* start and end, ms */
  float hstx, hsty;      /* head-referenced position at the start */
  float gstx, gsty;      /* gaze position at the start */
  float sta;             /* pupil size at the start */
  float henx, heny;      /* head-referenced position at the end */
  float genx, geny;      /* gaze position at the end */
  float ena;             /* pupil size at the end */
  float havx, havy;      /* mean head-referenced position */
  float gavx, gavy;      /* mean gaze position */
  float ava;             /* mean pupil size */
  float avel, pvel;      /* average velocity, peak velocity */
  float svel, evel;      /* velocity at start and end */
  float supd_x, eupd_x;  /* horizontal resolution at start and end */
  float supd_y, eupd_y;  /* vertical resolution at start and end */
  INT16 eye;             /* GZD_LEFT_EYE or GZD_RIGHT_EYE */
  UINT16 status;         /* always 0 in records of a file */
  UINT16 flags;          /* flags word */
  UINT16 input;          /* state of the input port */
  UINT16 buttons;        /* which buttons changed, and their state */
  UINT16 parsedby;       /* position type of the event: GZD_POSITION_ */
  LSTRING* message;      /* text of a message, or null; lives as long as the record */
  float headInSpaceX_start, headInSpaceX_end, headInSpaceX_avg;    /* head in space, x */
  float headInSpaceY_start, headInSpaceY_end, headInSpaceY_avg;    /* head in space, y */
  float eyeInHeadX_start, eyeInHeadX_end, eyeInHeadX_avg;          /* eye in head, x */
  float eyeInHeadY_start, eyeInHeadY_end, eyeInHeadY_avg;          /* eye in head, y */
  float headRotationX_start, headRotationX_end, headRotationX_avg; /* head rotation, x */
  float headRotationY_start, headRotationY_end, headRotationY_avg; /* head rotation, y */
  float headRotationZ_start, headRotationZ_end, headRotationZ_avg; /* head rotation, z */
  float headPositionX_start, headPositionX_end, headPositionX_avg; /* head position, x */
  float headPositionY_start, headPositionY_end, headPositionY_avg; /* head position, y */
  float headPositionZ_start, headPositionZ_end, headPositionZ_avg; /* head position, z */
} FEVENT;

/* A message in a record of its own. */
typedef struct {
  UINT32 time;    /* ms */
  INT16 type;     /* GZD_MESSAGE */
  UINT16 length;  /* length of the text */
  byte text[260]; /* the text */
} IMESSAGE;

/* A button or input change. */
typedef struct {
  UINT32 time; /* ms */
  INT16 type;  /* GZD_BUTTON or GZD_INPUT */
  UINT16 data; /* the buttons or the input port */
} IOEVENT;

/* The start or the end of a recording block. */
typedef struct {
  UINT32 time;         /* ms */
  float sample_rate;   /* samples per second: 250, 500, 1000 or 2000 */
  UINT16 eflags;       /* flags word of the events-start record */
  UINT16 sflags;       /* SMP_ bits of the block's samples */
  byte state;          /* GZD_BLOCK_START or GZD_BLOCK_END */
  byte record_type;    /* GZD_RECORD_SAMPLES, _EVENTS or _BOTH */
  byte pupil_type;     /* 0 area, 1 diameter */
  byte recording_mode; /* 0 pupil only, 1 pupil and corneal reflection */
  byte filter_type;    /* filter level */
  byte pos_type;       /* position type of events: GZD_POSITION_ */
  byte eye;            /* GZD_BLOCK_LEFT, _RIGHT, _BOTH or _NO_EYE */
} RECORDINGS;

/* Any record. Which member holds is told by gzd_get_next_data's code. */
typedef union {
  FEVENT fe;      /* eye events, messages, buttons, input */
  IMESSAGE im;    /* not used by the library */
  IOEVENT io;     /* not used by the library */
  FSAMPLE fs;     /* GZD_SAMPLE */
  RECORDINGS rec; /* GZD_RECORDING */
} ALLF_DATA;

/* One trial. */
typedef struct {
  RECORDINGS* rec;        /* the recording block it lies in; null until the trial is closed */
  unsigned int duration;  /* ms; 0 when a later block start or the end of the file closed it */
  unsigned int starttime; /* ms */
  unsigned int endtime;   /* ms */
} TRIAL;

/* A place in the walk. */
typedef struct {
  unsigned int id; /* index of the element */
} BOOKMARK;

/* Where gzd_get_gaze puts what it fetches: room for as many values as it is asked for; [0] of the
   left eye, [1] of the right. None may be null. */
typedef struct {
  double* time; /* ms, with half-milliseconds */
  float* gx[2]; /* these as FSAMPLE has them */
  float* gy[2];
  float* pa[2];
} GZD_GAZE_COLUMNS;

/* The camera's measurements of one eye: positions and boxes in camera pixels, x and y or width and
   height. A position that cannot be given is a pair of MISSING_DATA, a box a pair of
   MISSING_DATA_INT; areas are 0 then. */
typedef struct {
  float pupil[2], cr[2], cr2[2]; /* centres of the pupil and of the corneal reflections */
  float pupil_cr[2];             /* as gzd_get_pupil_cr gives it */
  UINT32 pupil_area, cr_area, cr2_area;
  UINT32 pupil_dimension[2], cr_dimension[2]; /* boxes */
  UINT32 window_position[2];                  /* centre of the tracking window */
} GZD_RAW_EYE;

/* Something that reading, checks or repairs have found. Of each kind the first 1000 are kept; the
   last of these takes in those that follow: it adds up their `count`, and its `end` is the largest
   of theirs. */
typedef struct {
  int kind;      /* GZD_FINDING_KIND; a newer library may tell kinds unknown to this header */
  int eye;       /* the eyes concerned: GZD_BLOCK_; GZD_BLOCK_NO_EYE when that is not told */
  int detail;    /* as told at the kind, else 0 */
  UINT32 merged; /* findings that this one stands for: 1, or more for the last of its kind */
  INT64 count;   /* things concerned (samples, messages, bytes), as told at the kind, else 1 */
  INT64 place;   /* of the record concerned: bytes from the beginning of the file, for compressed
                    recordings of the inflated records; -1 when there is none */
  double start, end; /* ms, exact, never shifted; the same of what happens at one time, -1 of what
                        has none */
} GZD_FINDING;

/* How to open a file. */
typedef struct {
  float default_rx, default_ry; /* resolution when the file has none; MISSING_DATA: none */
  int enable_debug;             /* 1: write a trace of the opening to debug_file_name */
  char* debug_file_name;        /* used only while enable_debug is 1 */
} CONFIG;

#ifdef __cplusplus
}
#endif

#endif
