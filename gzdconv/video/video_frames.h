// Which frame of a recorded video was showing: the table of frames of the current session, and the
// walk over its frame times.
//
// One table is loaded at a time. Messages go to standard output.
#ifndef GZDCONV_VIDEO_FRAMES_H
#define GZDCONV_VIDEO_FRAMES_H

namespace gzdconv {

// Loads the table "<recording without extension><session>.ett". `create` only chooses the message
// for a table that cannot be opened: tables are never made here. Returns 0, or -1: a name that
// does not end in "gzd" or a file that cannot be opened leaves the table before in force, a damaged
// table leaves none.
int openLookupTable(const char* gzdFile, int session, int create);

// Forgets the table.
void closeLookupTable();

// The frame number near `time` (ms), or -1. The first form loads the session's own table when
// another one is loaded.
int findFrameNumberForGZDTime(int session, int time);
int findFrameNumberForGZDTimeInCurrentLookupTable(int time);

// The time (ms) of the next frame in order, or -1 after the last one and without a table.
int getNextFrameTime();

// The number of the frame whose time getNextFrameTime() gave last, or -1 when it gave none.
int getLastFrameNumber();

// The name of the loaded table's session; null without a table. It lives as long as the table.
const char* getCurrentSessionName();

// Returns its argument.
char* setupPath(char* path);

}  // namespace gzdconv

#endif
