#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a user and a developer get there: the
# library with its SONAME links, the header, pkg-config and CMake packages (a C program is built and
# run through each), the examples (built through pkg-config and run on virtual mixers), the bundle
# data, the udev rule's text and the user unit, the manual page and the bash completion, and what
# `mxrk7 doctor` says about such a prefix.
#   check_install.sh BUILD_DIR VERSION VID PID LIBDIR
set -euo pipefail
build=$1 version=$2 vid=$3 pid=$4 libdir=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
here=$(cd "$(dirname "$0")" && pwd)

cmake --install "$build" --prefix "$prefix" >/dev/null
export MXRK7_VIRTUAL_MIXERS=$work/none.json XDG_CONFIG_HOME=$work/config
echo '{"mixers": []}' >"$MXRK7_VIRTUAL_MIXERS"
unset DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR MXRK7_SYSROOT

fail() { echo "FAIL: $*"; exit 1; }
major=${version%%.*}
[ -L "$prefix/$libdir/libNorvaneMXRK7Setup.so" ] || fail "no development symlink"
[ "$(readlink "$prefix/$libdir/libNorvaneMXRK7Setup.so.$major")" = "libNorvaneMXRK7Setup.so.$version" ] || fail "SONAME link"
[ -f "$prefix/include/NorvaneMXRK7Setup.h" ] || fail "header"
[ -f "$prefix/share/mxrk7/System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist" ] || fail "bundle"
[ -x "$prefix/bin/mxrk7" ] || fail "tool"

# pkg-config
PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
export PKG_CONFIG_PATH
[ "$(pkg-config --modversion NorvaneMXRK7Setup)" = "$version" ] || fail "pkg-config version"
# shellcheck disable=SC2046
cc -std=c99 -Wall -Werror "$here/consumer/consumer.c" -o "$work/consumer-pc" $(pkg-config --cflags --libs NorvaneMXRK7Setup) \
  -Wl,-rpath,"$prefix/$libdir"
"$work/consumer-pc" "$version"

# find_package
cmake -S "$here/consumer" -B "$work/consumer-build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/consumer-build" >/dev/null
"$work/consumer-build/consumer" "$version"

# The examples, built against the installed library as a newcomer builds them, and run on two
# virtual mixers: the first one's deck 1 input selector is away from the routing's position.
examples=$here/../../examples
for example in mixer_status set_routing watch_routing; do
  # shellcheck disable=SC2046
  cc -std=c99 -Wall -Wextra -Werror "$examples/$example.c" -o "$work/$example" \
    $(pkg-config --cflags --libs NorvaneMXRK7Setup glib-2.0) -Wl,-rpath,"$prefix/$libdir"
done
cat >"$work/mixers.json" <<'JSON'
{"log": "requests.log", "mixers": [{"firmware": [5, 1], "input_selectors": [2, 4, 4, 4], "serato": 1}, {}]}
JSON
(
  export MXRK7_VIRTUAL_MIXERS=$work/mixers.json
  out=$("$work/mixer_status") || fail "mixer_status exits $?"
  grep -qx "firmware      0x0105" <<<"$out" || fail "mixer_status: $out"
  grep -qx "Serato        not active" <<<"$out" || fail "mixer_status: $out"
  out=$(env -u LANGUAGE -u LC_ALL -u LC_MESSAGES LANG=de_DE.UTF-8 "$work/set_routing" 0 1) || fail "set_routing exits $?"
  grep -q "Eingangswahlschalter" <<<"$out" || fail "set_routing shows no German warning: $out"
  grep -qx "1 40 03 00 01 02 80 00 00" "$work/requests.log" || fail "set_routing sent no routing write to mixer 1"
  # The watcher hears a change made by another process on its session bus, and Ctrl-C ends it.
  export work
  # shellcheck disable=SC2016  # expanded by the inner shell
  timeout 60 dbus-run-session -- bash -euo pipefail -c '
    seen() { for _ in $(seq 100); do grep -qF "$1" "$work/watch.out" && return 0; sleep 0.1; done; return 1; }
    "$work/watch_routing" >"$work/watch.out" & watcher=$!
    seen "Watching" && "$work/set_routing" 1 3 >/dev/null && seen "USB audio channel 1: Cross Fader A" ||
      { kill "$watcher"; exit 1; }
    kill -INT "$watcher" && wait "$watcher" && seen "Changes seen: 1"' || fail "watch_routing: $(cat "$work/watch.out")"
)

# udev rule, from the build's USB numbers
rule=$(grep -v '^#' "$prefix/lib/udev/rules.d/70-mxrk7.rules")
expected="SUBSYSTEM==\"usb\", ATTR{idVendor}==\"$vid\", ATTR{idProduct}==\"$pid\", TAG+=\"uaccess\", TAG+=\"systemd\", ENV{SYSTEMD_USER_WANTS}+=\"mxrk7-apply.service\""
[ "$rule" = "$expected" ] || fail "udev rule is: $rule"
[ "$("$prefix/bin/mxrk7" udev-rule | grep -v '^#')" = "$expected" ] || fail "mxrk7 udev-rule prints another rule"

# user unit: names the installed tool and passes systemd's own check
unit=$prefix/lib/systemd/user/mxrk7-apply.service
grep -qx "ExecStart=$prefix/bin/mxrk7 apply --wait" "$unit" || fail "unit ExecStart"
systemd-analyze verify --man=no "$unit"

# manual page and bash completion
[ -f "$prefix/share/man/man1/mxrk7.1.gz" ] || fail "manual page"
zgrep -q "NorvaneMXRK7Setup $version" "$prefix/share/man/man1/mxrk7.1.gz" || fail "manual page without the version"
[ -f "$prefix/share/bash-completion/completions/mxrk7" ] || fail "bash completion"
bash --norc -c "source '$prefix/share/bash-completion/completions/mxrk7' && complete -p mxrk7" >/dev/null ||
  fail "bash completion does not register"

# doctor in a prefix that udev and the service manager do not read: it says so, and nothing blocks use
report=$("$prefix/bin/mxrk7" doctor --json) || fail "doctor exits $? in the prefix"
status_of() { python3 -c 'import json,sys; print(" ".join(c["status"] for c in json.load(sys.stdin)["checks"] if c["area"] == sys.argv[1]))' "$1" <<<"$report"; }
message_of() { python3 -c 'import json,sys; print(" ".join(c["message"] for c in json.load(sys.stdin)["checks"] if c["area"] == sys.argv[1]))' "$1" <<<"$report"; }
[ "$(status_of "data folder")" = ok ] || fail "doctor: data folder: $(message_of "data folder")"
message_of "data folder" | grep -qF "$prefix/share/mxrk7:" || fail "doctor: data folder: $(message_of "data folder")"
if [ ! -e /etc/udev/rules.d/70-mxrk7.rules ] && [ ! -e /usr/lib/udev/rules.d/70-mxrk7.rules ] && [ ! -e /lib/udev/rules.d/70-mxrk7.rules ]; then
  message_of "udev rule" | grep -qF "installed as $prefix/lib/udev/rules.d/70-mxrk7.rules, where udev does not read it" ||
    fail "doctor: udev rule: $(message_of "udev rule")"
fi
if [ ! -e "$HOME/.config/systemd/user/mxrk7-apply.service" ] && [ ! -e /usr/lib/systemd/user/mxrk7-apply.service ] &&
  [ ! -e /etc/systemd/user/mxrk7-apply.service ]; then
  message_of "user unit" | grep -qF "installed as $unit, where your service manager does not look" ||
    fail "doctor: user unit: $(message_of "user unit")"
fi

echo "install check: 1 passed, 0 failed"
