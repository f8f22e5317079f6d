#!/usr/bin/env bash
# Draws the tray icon, the strip, the dashboard and the main window's pages with this machine's figures into PNG
# files, without a display. The pictures shown in the README come from here.
# Usage: scripts/render-pictures.sh [build-dir] [output-dir]
set -euo pipefail
build=${1:-build}
out=${2:-docs/pictures}
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
# A private home keeps the user's preferences and history out of the pictures' run.
XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data QT_QPA_PLATFORM=offscreen \
  "$build/tallowmere" --pictures "$out"
