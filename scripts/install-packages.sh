#!/usr/bin/env bash
# Installs the named Debian packages that are missing (apt-get, as root or
# through sudo). Names may carry an architecture (wine32:i386); such an
# architecture is added to dpkg first.
#
#   scripts/install-packages.sh g++-mingw-w64-i686 binutils-mingw-w64-i686
set -euo pipefail
missing=()
for p in "$@"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
[ ${#missing[@]} -gt 0 ] || exit 0

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
export DEBIAN_FRONTEND=noninteractive
for p in "${missing[@]}"; do
  case "$p" in
    *:*) arch=${p##*:}
         dpkg --print-foreign-architectures | grep -qx "$arch" || $SUDO dpkg --add-architecture "$arch" ;;
  esac
done
# A mirror caught mid-sync can fail one index (seen for bookworm-security's
# i386 list); the lists that did arrive are still good to install from.
$SUDO apt-get update || echo "apt-get update reported errors; going on with the lists it has"
if ! $SUDO apt-get install -y --no-install-recommends "${missing[@]}"; then
  # Packages of a second architecture must match the installed native
  # versions. When the security suite's list for that architecture is
  # missing, the release suite's versions match on both sides: ask for those.
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  [ -n "$codename" ] || exit 1
  echo "retrying with the packages of the $codename release"
  $SUDO apt-get install -y --no-install-recommends -t "$codename" "${missing[@]}"
fi
