# What the commands of the cases may use besides the programs.
# shellcheck shell=bash

# tell COMMAND...: shows the command, runs it and shows its exit status.
tell() {
  local status=0
  printf '$ %s\n' "$*"
  "$@" || status=$?
  printf 'exit %s\n' "$status"
}

# A recording of a few lines.
small_recording() { golden_recordings event_kinds "$1"; }
