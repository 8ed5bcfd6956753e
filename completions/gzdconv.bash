# Completion of gzdconv's command line for bash.
# shellcheck shell=bash

_gzdconv_words() { mapfile -t COMPREPLY < <(compgen "$@"); }

_gzdconv_options() {
  _gzdconv_words -W "
    -avg -buttons -c -cl -d -DEBUG -defres -e -eh -failsafe -fout -fp -ftime -fvel -g3DEye -g3DScr
    -gazemap -geom -hpos -hr -i -input -l -logmsg -miss -ne -ned -neye -nflags -nht -nl -nmsg
    -npa_check -nr -ns -nst -ntarget -ntime_check -nv -o -p -pe -q -r -res -s -SCENECAM -SEPRES
    -setres -sfhmf -sg -sh -sp -t -utf8 -v -vel -x -y -z --help --version" -- "$1"
}

# Recordings in any case of their extension, and directories on the way to them.
_gzdconv_recordings() {
  mapfile -t COMPREPLY < <(compgen -f -X '!*.[gG][zZ][dD]' -- "$1"; compgen -d -- "$1")
}

# Files that may be written over: no recordings.
_gzdconv_other_files() {
  mapfile -t COMPREPLY < <(compgen -f -X '*.[gG][zZ][dD]' -- "$1")
}

_gzdconv() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case ${before,,} in
    -p) _gzdconv_words -d -- "$word" ;;
    -d | -debug) _gzdconv_other_files "$word" ;;
    -fp) _gzdconv_words -W "1 2 3 4 5" -- "$word" ;;
    -defres | -setres | -fout | -miss | -sepres) ;; # a value of the user's own
    *)
      case $word in
        -*) _gzdconv_options "$word" ;;
        *) _gzdconv_recordings "$word" ;;
      esac
      ;;
  esac
}

complete -o filenames -F _gzdconv gzdconv
