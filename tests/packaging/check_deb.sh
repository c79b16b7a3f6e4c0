#!/usr/bin/env bash
# Builds the Debian package, installs it on this machine, runs `mxrk7 doctor`, and removes it again.
# Needs root (CI runs as root); elsewhere it reports itself skipped.
#   check_deb.sh BUILD_DIR
set -euo pipefail
build=$1
if [ "$(id -u)" -ne 0 ]; then echo "not root: skipped"; exit 77; fi
# Only an installed package counts: one removed earlier may linger as "config-files".
if dpkg-query -W -f='${Status}' norvane-mxrk7-setup 2>/dev/null | grep -q 'install ok installed'; then
  echo "package already installed: skipped"; exit 77
fi
(cd "$build" && cpack -G DEB >/dev/null)
deb=$(ls -t "$build"/norvane-mxrk7-setup_*.deb | head -1)
trap 'dpkg --purge norvane-mxrk7-setup >/dev/null 2>&1 || true' EXIT
dpkg -i "$deb" >/dev/null
[ -f /usr/lib/udev/rules.d/70-mxrk7.rules ] || { echo "FAIL: udev rule not in udev's folder"; exit 1; }
# Looked for in the package: an image may tell dpkg not to unpack manual pages.
contents=$(dpkg -c "$deb")
grep -q '\./usr/share/man/man1/mxrk7\.1$' <<<"$contents" || { echo "FAIL: no manual page in the package"; exit 1; }
grep -q '\./usr/share/bash-completion/completions/mxrk7$' <<<"$contents" || { echo "FAIL: no bash completion in the package"; exit 1; }
work=$(mktemp -d)
HOME=$work XDG_CONFIG_HOME=$work/config /usr/bin/mxrk7 doctor
HOME=$work XDG_STATE_HOME=$work/state /usr/bin/mxrk7 --virtual info >/dev/null
rm -rf "$work"
echo "deb check: 1 passed, 0 failed"
