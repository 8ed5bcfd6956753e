// The text of the help.
#include <cstdio>

#include "cli/console.h"

namespace gzdconv {

namespace {

constexpr const char* usage_text = R"(USAGE: %s  [options] <input .gzd file>
OPTIONS:
     -c  Check consistency.
     -d  <filename> Creates log data file.
     -p  <path> Writes output with same name to <path> directory.
     -q  Quiet mode.
     -t  Use only tabs as delimiters.
     -v  Verbose - reports warning messages.
     -y  Overwrite asc file if exists.
         If no output file name, will match wildcards on input file
         name, and will write output files to new path or will
         overwrite old files.
     -z  Disable check consistency and fix the errors.

DATA OPTIONS:
     -avg  Output average data.
     -buttons  Output buttons values in samples.
     -defres <xr> <yr>  Uses a default <xr>,<yr> resolution if none
         found in file.
     -e or -ns  Outputs event data only.
     -eh  Enable header printing for sample and events.
     -failsafe  Runs in failsafe mode and recovers partial gzd file.
     -fout <text>  Filter out messages with the given list of text.
     -fp <number of addional decimals>  Add additional precision for
         float values.
     -ftime  Output float time.
     -hpos  Output head marker positions.
     -input  Output input values in samples.
     -l or -nr  Outputs left-eye data only if binocular data file.
     -logmsg  Load tq_message.log to integrate with gzd file.
     -miss <value>  Replaces missing (x,y) in samples with <value>.
     -neye  To get samples labeled with non-eye events only.
     -neye -ns  To get non-eye events only.
     -neye  Outputs only non-eye events (for sample-only files).
     -nflags  To disable flags data for Ovilo Kestrel or Ovilo Falcon
         data files.
     -nmsg  Blocks message event output.
     -o  Assume that an integer at the start of a message is an offset.
         If present, apply any offset to the message time stamp, and
         remove it from the message body.
     -npa_check  Disable pupil area check to get gaze, href and
         raw data.
     -nst  Blocks output of start events.
     -ntarget  To disable target data for Ovilo Falcon Remote
         data files.
     -ntime_check  To disable large time stamp check.
     -nv  Hide viewer commands.
     -r or -nl  Outputs right-eye data only if binocular data file.
     -res  Outputs resolution data if present.
     -s or -ne  Outputs sample data only.
     -setres <xr> <yr>  Uses a fixed <xr>,<yr> resolution always.
     -sg  Outputs sample GAZE data if present (default).
     -sh  Outputs sample HREF angle data if present.
     -sp  Outputs sample raw pupil position if present.
     -utf8/-UTF8  To force the output file to be opened using utf-8
         encoding form.
     -vel (-fvel)  Outputs sample velocity (-fvel matches GZDVIEW
         numbers).

     Ovilo Osprey specific parameters: 
     -geom  Output messages with !GEOM, !IMU, and !MIPI.
     -hr  Output head resolution.
     -ned  Do not output extended eye/head position data.
     -nht  Do not output head tracking data.
     -pe  Output pupil ellipse.
)";

}  // namespace

void print_usage(const char* program) {
  std::printf(usage_text, program);
}

void print_help(const char* program) {
  print_usage(program);
  std::printf("\nSee gzdconv(1) for the manual.\n");
}

}  // namespace gzdconv
