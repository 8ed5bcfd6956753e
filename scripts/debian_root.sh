# A bare Debian 12 in a directory, to test in it what is installed; sourced, not run. Needs root.
# shellcheck shell=bash disable=SC2034

readonly debian_suite=bookworm
readonly debian_needs=("debootstrap debootstrap" "unshare util-linux")

# The archive that this machine's own packages come from.
debian_mirror() {
  find /etc/apt -name '*.list' -o -name '*.sources' | sort | xargs sed '/^ *#/d' |
    sed -nE 's#.*(https?://[^ ]*/debian)/?( .*)?$#\1#p' | sed -n 1p
}

# make_debian_root ROOT
make_debian_root() {
  local mirror
  mirror=$(debian_mirror)
  [[ -n $mirror ]] || { say "no Debian mirror in /etc/apt/sources.list*" >&2; return 1; }
  heading "debootstrap of $debian_suite from $mirror"
  quietly "debootstrap" debootstrap --variant=minbase "$debian_suite" "$1" "$mirror"
}

# in_debian_root ROOT COMMAND...: runs it there with /dev and /proc, which go when it ends.
in_debian_root() {
  local root=$1
  shift
  # shellcheck disable=SC2016
  unshare --mount bash -euc '
    root=$1
    shift
    mount --rbind /dev "$root/dev"
    mount -t proc proc "$root/proc"
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive \
      chroot "$root" "$@"' bash "$root" "$@"
}
