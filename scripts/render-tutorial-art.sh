#!/usr/bin/env bash
# Renders the welcome tutorial's pictures from their SVG sources in
# src/onboarding/art to the JPEGs the application bundles beside them. Run it
# after changing an SVG and commit both. Needs qt6-svg-dev and a C++ compiler;
# the pictures use the DejaVu fonts (fonts-dejavu-core).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
work="$(mktemp -d)"
trap 'rm -f "$work/svg-to-jpg"; rmdir "$work"' EXIT
# shellcheck disable=SC2046 # pkg-config's words are meant to split
c++ -std=c++20 -fPIC -O1 "$root/scripts/svg-to-jpg.cpp" -o "$work/svg-to-jpg" \
  $(pkg-config --cflags --libs Qt6Svg Qt6Gui Qt6Core)
pairs=()
for svg in "$root"/src/onboarding/art/Tutorial_0*.svg; do
  pairs+=("$svg" "${svg%.svg}.jpg")
done
QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$work" "$work/svg-to-jpg" "${pairs[@]}"
echo "rendered $(( ${#pairs[@]} / 2 )) pictures"
