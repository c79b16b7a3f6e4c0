#!/usr/bin/env bash
# Installs every Debian package that building and testing this project needs.
# Idempotent: when everything is already there it prints nothing and changes nothing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkgconf git python3
  clang libclang-rt-14-dev               # libFuzzer targets
  libusb-1.0-0-dev libplist-dev libsystemd-dev libglib2.0-dev
  nlohmann-json3-dev libcli11-dev libfmt-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  umockdev libumockdev-dev
  dbus dbus-daemon                       # dbus-run-session for notification tests
  util-linux                             # setpriv for permission tests
  systemd                                # systemd-analyze verify of the user unit
  groff-base                             # renders the manual page in the tool's tests
  valgrind
  doxygen                                # the API reference (graphviz is not used)
  libgtkmm-4.0-dev libadwaita-1-dev       # the setup application
  libgudev-1.0-dev                       # its watch for plugged and unplugged mixers
  gettext                                # its translations (xgettext, msgfmt, msgcmp)
  xvfb xauth                             # its tests and screenshots on a virtual X server
  desktop-file-utils appstream           # checks of its desktop entry and AppStream metadata
  file lintian                           # the Debian packages: CPack's dependency scan, their check
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  sudo=sudo
else
  sudo=
fi
echo "bootstrap: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
