#!/usr/bin/env bash
# Checks the Debian packages that `cmake --workflow --preset package` built, as a distribution would
# and as a user gets them:
#   - lintian reports no error (its warnings are printed; docs/packaging.md explains each);
#   - the library package needs no GTK and no libadwaita, by its Depends and by the NEEDED closure
#     of the installed library;
#   - installed on this machine: mxrk7 doctor and mxrk7 info use the installed data folder, and a C
#     program builds against the -dev package with pkg-config and with CMake, and runs;
# then purges them again. Needs root and no installed copy of these packages (CI runs it on a fresh
# machine); otherwise it reports itself skipped.
#   check_packages.sh PACKAGE_DIR
set -euo pipefail
dir=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
fail() { echo "FAIL: $*"; exit 1; }

if [ "$(id -u)" -ne 0 ]; then echo "not root: skipped"; exit 77; fi
shopt -s nullglob
debs=("$dir"/*.deb)
[ ${#debs[@]} -gt 0 ] || fail "no packages in $dir"
declare -A deb_of
for deb in "${debs[@]}"; do deb_of[$(dpkg-deb -f "$deb" Package)]=$deb; done
for name in libnorvanemxrk7setup1 mxrk7-data libnorvanemxrk7setup-dev mxrk7; do
  [ -n "${deb_of[$name]:-}" ] || fail "no package $name in $dir"
done
names=("${!deb_of[@]}")
for name in "${names[@]}"; do
  # Only an installed package counts: one removed earlier may linger as "config-files".
  if dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q 'install ok installed'; then
    echo "$name is installed on this machine: skipped"; exit 77
  fi
done
library_deb=${deb_of[libnorvanemxrk7setup1]}
version=$(dpkg-deb -f "$library_deb" Version)
work=$(mktemp -d)
trap 'dpkg --purge "${names[@]}" >/dev/null 2>&1 || true; rm -rf "$work"' EXIT

# --- The packages as files -----------------------------------------------------------------------
lintian --fail-on error --tag-display-limit 0 --suppress-tags-from-file /dev/null "${debs[@]}" ||
  fail "lintian reports errors"

depends=$(dpkg-deb -f "$library_deb" Depends)
if grep -Eiq 'gtk|adwaita' <<<"$depends"; then fail "the library package depends on GTK: $depends"; fi

# --- Installed -----------------------------------------------------------------------------------
dpkg -i "${debs[@]}" >/dev/null
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
installed_library=/usr/lib/$multiarch/libNorvaneMXRK7Setup.so.1
[ -e "$installed_library" ] || fail "the library is not in /usr/lib/$multiarch"
closure=$(ldd "$installed_library")
if grep -Eiq 'gtk|adwaita' <<<"$closure"; then fail "the library loads GTK: $closure"; fi

export HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_STATE_HOME=$work/home/state
export MXRK7_VIRTUAL_MIXERS=$work/none.json
echo '{"mixers": []}' >"$MXRK7_VIRTUAL_MIXERS"
unset DBUS_SESSION_BUS_ADDRESS XDG_RUNTIME_DIR MXRK7_SYSROOT
field() { python3 -c 'import json,sys; d=json.load(sys.stdin)
for key in sys.argv[1].split("."): d=d[key]
print(d)' "$1"; }

/usr/bin/mxrk7 doctor || fail "mxrk7 doctor exits $?"
doctor=$(/usr/bin/mxrk7 doctor --json)
data_check=$(python3 -c 'import json,sys; print(*[c["status"] + " " + c["message"] for c in json.load(sys.stdin)["checks"] if c["area"] == "data folder"])' <<<"$doctor")
[ "$data_check" = "ok /usr/share/mxrk7: version $version, the same as this tool" ] || fail "doctor: data folder: $data_check"

/usr/bin/mxrk7 info
info=$(/usr/bin/mxrk7 info --json)
[ "$(field data_folder.path <<<"$info")" = /usr/share/mxrk7 ] || fail "info: data folder $(field data_folder.path <<<"$info")"
[ "$(field versions.library.text <<<"$info")" = "$version" ] || fail "info: the library's version text"
unset MXRK7_VIRTUAL_MIXERS
[ "$(/usr/bin/mxrk7 --virtual info --json | field connection)" = connected ] || fail "the demo mixers of --virtual"

# A C program against the -dev package: it finds the library's data from the multiarch folder and
# checks the version text there.
build_with_pkg_config() {  # SOURCE PROGRAM
  # shellcheck disable=SC2046
  cc -std=c99 -Wall -Werror "$1" -o "$2" $(pkg-config --cflags --libs NorvaneMXRK7Setup)
}
[ "$(pkg-config --modversion NorvaneMXRK7Setup)" = "$version" ] || fail "pkg-config version"
build_with_pkg_config "$here/consumer/consumer.c" "$work/consumer-pc"
"$work/consumer-pc" "$version"
cmake -S "$here/consumer" -B "$work/consumer-cmake" -G Ninja >/dev/null
cmake --build "$work/consumer-cmake" >/dev/null
"$work/consumer-cmake/consumer" "$version"
# The examples build against the installed -dev package too (they run in the install check).
for example in "$here"/../../examples/*.c; do
  # shellcheck disable=SC2046
  cc -std=c99 -Wall -Wextra -Werror "$example" -o "$work/$(basename "$example" .c)" \
    $(pkg-config --cflags --libs NorvaneMXRK7Setup glib-2.0) || fail "example $(basename "$example")"
done

echo "package check passed: ${#debs[@]} packages without a lintian error, installed and used (purged again on exit)"
