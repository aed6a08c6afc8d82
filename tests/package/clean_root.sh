# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# To be sourced: clean roots of Debian and Ubuntu releases, gone after their use. Needs root.

name_in_os_release() {
  # shellcheck source=/dev/null
  (. /etc/os-release && echo "${!1}")
}

# Prints the name of a file with this machine's package sources, turned to the named release, that it
# writes into the folder. Prints nothing where they cannot have that release.
sources_of() {
  local release=$1 folder=$2 own this
  this=$(name_in_os_release VERSION_CODENAME)
  [ "$release" = "$this" ] || [ "$(name_in_os_release ID)" = debian ] || return 0
  own=$(grep -lrsE "^(URIs:|deb) .*/(debian|ubuntu)/?( |$)" /etc/apt/sources.list* | head -n 1)
  sed "s/\b$this\b/$release/g" "$own" >"$folder/$(basename "$own")"
  echo "$folder/$(basename "$own")"
}

# Makes a root of the named release below a folder, for at most a number of seconds, and runs in it
# what the further arguments, which are mmdebstrap's, say.
in_root_of() {
  local release=$1 folder=$2 seconds=$3 scratch sources status=0
  scratch=$(mktemp -d -p "$folder")
  chmod 0755 "$scratch"  # package sources are read as another user
  sources=$(sources_of "$release" "$scratch")
  # (With mounts of its own: it leaves some where what it runs fails.)
  TMPDIR=$scratch timeout "$seconds" unshare --mount mmdebstrap --mode=root --variant=apt --format=null \
    "${@:4}" "$release" - ${sources:+"$sources"} || status=$?
  rm -rf --one-file-system "$scratch"
  return $status
}
