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
  strace                                 # traces the settings update's system calls (durability test)
  doxygen                                # the API reference (graphviz is not used)
  libexpat1-dev                          # the settings file's XML reader
  passwd                                 # useradd: the store tests' own unprivileged accounts
  locales                                # localedef: a comma-decimal locale for the store tests
  libgtkmm-4.0-dev libadwaita-1-dev       # the setup application
  libgudev-1.0-dev                       # its watch for plugged and unplugged mixers
  gettext                                # its translations (xgettext, msgfmt, msgcmp)
  xvfb xauth                             # its tests and screenshots on a virtual X server
  desktop-file-utils appstream           # checks of its desktop entry and AppStream metadata
  file lintian                           # the Debian packages: CPack's dependency scan, their check
)

if [ "$(id -u)" -ne 0 ]; then
  sudo=sudo
else
  sudo=
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -ne 0 ]; then
  echo "bootstrap: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# A locale that writes 1,75 for 1.75: the store tests check that other programs' numbers survive it.
if ! locale -a 2>/dev/null | grep -qx 'de_DE.utf8'; then
  echo "bootstrap: generating the de_DE.UTF-8 locale"
  $sudo localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
