// Recordings written down as text, a record a line. The words of a line:
//
//   tracker 3                     preamble of a generation, before all else; 2 without the line
//   magic osp                     falc, osp, falczip, ospzip; or magic "a line of its own\n"
//   preamble "KEY: VALUE"         one more line of it; endp "TEXT" is its closing line
//   noend                         no closing zero tag
//   block 1000 rate=500 flags=LRga gaze=10 ...    start of events and of samples
//   events 1000 ...  samples 1000 ...             only one of them
//   end 2000  endevents 2000  endsamples 2000
//   sample 1000 flags=LRga gx=5123,5223 gy=3847   later samples keep what they do not change
//   sample +2 *10 dx=3            ten samples 2 ms apart, each 3 further to the right
//   sample ~2                     a record that holds a step of time instead of a time
//   sample +1 flags=Lgx target=... pose=... ellipse=... odd=LENGTH,KIND,BYTE,... skip=(the same)
//   event EFIX eye=1 by=128 start=1000 end=1200 106=5123,3847 114=900    CODE=WORD[,WORD]
//   event 24 start=5 len=3 "text" unclosed hex=00ff pose=(36 values)
//   msg 1000 "text"   button 1000 257   input 1000 7   long 1000 ID "text" piece=460
//   hex 00ff                      bytes as they are
//   random SEED COUNT             records of all sorts
//
// Flags are the letters of "LRtphgrasibdxko", from left eye to odd half-milliseconds, or a number.
// In texts \n, \t, \\, \" and \xHH are single characters, \(900a) is the letter a 900 times.
#ifndef TESTS_GOLDEN_RECORDING_TEXT_H
#define TESTS_GOLDEN_RECORDING_TEXT_H

#include <istream>
#include <string>

#include "GzdWriter.h"

namespace golden {

// Throws std::runtime_error, which names the line, when the text makes no sense.
gzdsynth::GzdWriter recording_of(std::istream& text);
gzdsynth::GzdWriter recording_of_file(const std::string& path);

// One of tests/golden/recordings, by its name.
gzdsynth::GzdWriter small_recording(const std::string& name);

}  // namespace golden

#endif
