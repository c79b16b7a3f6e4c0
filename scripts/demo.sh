#!/usr/bin/env bash
# Newcomer's first command: installs what is missing, builds the tool and the setup application, and
# shows the tool working against the two built-in virtual mixers (no hardware, no change to your real
# settings).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
cmake --preset release >/dev/null
cmake --build --preset release --target mxrk7 mxrk7-setup >/dev/null
build/release/bin/mxrk7 --virtual info
echo
build/release/bin/mxrk7 --virtual show
echo
echo "The setup application on the same virtual mixers: build/release/bin/mxrk7-setup --virtual"
