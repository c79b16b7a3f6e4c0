#!/usr/bin/env bash
# Pictures of every page of the setup application against the two demo virtual mixers, for the
# documentation: docs/screenshots/<page>-<wide|narrow>[-dark].png at 1280x800 and 360 px wide, in
# the light and the dark style, and docs/screenshots/de-<page>-wide.png in German. Needs a release
# build (scripts/test.sh makes one) or builds the application itself; runs on a virtual X server,
# so it works without a desktop.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${MXRK7_BUILD_DIR:-build/release}
out=${1:-docs/screenshots}

if [ ! -x "$build/bin/mxrk7-setup" ]; then
  cmake --preset release >/dev/null
  cmake --build --preset release --target mxrk7-setup >/dev/null
fi

# A fresh demo settings folder with a few saved settings, so the pages show values; the real
# settings are never touched.
state=$(mktemp -d)
trap 'rm -rf "$state"' EXIT
export XDG_STATE_HOME="$state"
unset MXRK7_VIRTUAL_MIXERS
mkdir -p "$state/mxrk7/demo"
cat >"$state/mxrk7/demo/com.norvane.MXR-K7autosetup.plist" <<'PLIST'
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>Output0</key><integer>0</integer>
	<key>Output1</key><integer>3</integer>
	<key>Output2</key><integer>0</integer>
	<key>Output3</key><integer>0</integer>
	<key>MaxLevel</key><integer>1</integer>
	<key>BANKA_FILTER</key><integer>320</integer>
	<key>BFX_BANKA0_0</key><integer>2</integer>
	<key>BFX_BANKA0_1</key><integer>400</integer>
	<key>BFX_BANKA0_2</key><integer>520</integer>
	<key>BFX_BANKA1_0</key><integer>2057</integer>
	<key>CHFADERBANK_A</key><integer>1</integer>
	<key>TAIL_BANK_A</key><integer>1</integer>
	<key>CRFaderCutLag</key><integer>16</integer>
	<key>PADMode</key><integer>1</integer>
</dict>
</plist>
PLIST

# One run of the application: every page, wide and narrow, into $1; the rest of the arguments are
# the environment of that run. GTK's software renderer, so the pictures do not depend on the
# machine's graphics.
shoot() {
  local dir=$1
  shift
  mkdir -p "$dir"
  env GSK_RENDERER=cairo "$@" \
    dbus-run-session -- xvfb-run -a -s "-screen 0 1280x1024x24" \
    "$build/bin/mxrk7-setup" --virtual --screenshots "$dir" 2> >(grep -v -e '^dbus-daemon' -e 'SpiRegistry' >&2) >/dev/null
}

mkdir -p "$out"
shots=$state/shots
shoot "$shots/light" ADW_DEBUG_COLOR_SCHEME=prefer-light LANGUAGE=en LC_ALL=C.UTF-8
shoot "$shots/dark" ADW_DEBUG_COLOR_SCHEME=prefer-dark LANGUAGE=en LC_ALL=C.UTF-8
shoot "$shots/de" ADW_DEBUG_COLOR_SCHEME=prefer-light LANGUAGE=de LC_ALL=C.UTF-8
for picture in "$shots"/light/*.png; do
  name=$(basename "$picture" .png)
  cp "$picture" "$out/$name.png"
  cp "$shots/dark/$name.png" "$out/$name-dark.png"
done
for picture in "$shots"/de/*-wide.png; do cp "$picture" "$out/de-$(basename "$picture")"; done
ls "$out"
