#!/usr/bin/env bash
# Takes the README's picture of the IDE: builds the screenshot program and
# runs it on a virtual X server, saving docs/screenshots/main-window.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
scripts/build.sh
export QT_QPA_PLATFORM=xcb ZORVEL_SCREENSHOT_DIR="$PWD/docs/screenshots"
export XDG_CONFIG_HOME="$(mktemp -d)"
xvfb-run -a -s "-screen 0 1280x800x24" build/tests/ide/ide_screenshot
echo "saved docs/screenshots/main-window.png"
