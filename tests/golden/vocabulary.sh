# What the commands of the cases may use besides the programs.
# shellcheck shell=bash

# tell COMMAND...: shows the command, runs it and shows its exit status.
tell() {
  local status=0
  printf '$ %s\n' "$*"
  "$@" || status=$?
  printf 'exit %s\n' "$status"
}

# recording NAME FILE: a recording that is written down in tests/golden/recordings.
recording() { golden_recordings "${recordings:?}/$1.txt" "$2"; }

# A recording of a few lines.
small_recording() { recording event_kinds "$1"; }
