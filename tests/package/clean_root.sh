# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# To be sourced: temporary clean roots of Debian and Ubuntu releases. Needs root.

name_in_os_release() {
  # shellcheck source=/dev/null
  (. /etc/os-release && echo "${!1}")
}

# Writes this machine's package sources, changed to the release, to a file in the folder and prints its
# name. Prints nothing if they cannot provide that release.
sources_of() {
  local release=$1 folder=$2 own this
  this=$(name_in_os_release VERSION_CODENAME)
  [ "$release" = "$this" ] || [ "$(name_in_os_release ID)" = debian ] || return 0
  own=$(grep -lrsE "^(URIs:|deb) .*/(debian|ubuntu)/?( |$)" /etc/apt/sources.list* | head -n 1)
  sed "s/\b$this\b/$release/g" "$own" >"$folder/$(basename "$own")"
  echo "$folder/$(basename "$own")"
}

# Creates a root of the release below the folder, with a time limit in seconds. Further arguments are
# options of mmdebstrap, such as hooks that run in the root.
in_root_of() {
  local release=$1 folder=$2 seconds=$3 scratch sources status=0
  scratch=$(mktemp -d -p "$folder")
  chmod 0755 "$scratch"  # package sources are read as another user
  sources=$(sources_of "$release" "$scratch")
  # mmdebstrap leaves mounts after a failure, so it gets its own mount namespace.
  TMPDIR=$scratch timeout "$seconds" unshare --mount mmdebstrap --mode=root --variant=apt --format=null \
    "${@:4}" "$release" - ${sources:+"$sources"} || status=$?
  rm -rf --one-file-system "$scratch"
  return $status
}
