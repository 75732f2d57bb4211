#!/usr/bin/env bash
# Makes the pictures of the documents anew from the running programs, in 256 colours to stay small.
# Builds what it needs; a display, which it starts itself, is the only other thing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
GLAZEL_PRESETS=release ./test.sh -R 'page_screenshot_test|look_editor_test'
for picture in page editor editor-light editor-wheels; do
  ffmpeg -v error -y -i "build/release/screenshots/$picture.png" \
    -vf 'split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=dither=sierra2_4a' \
    "docs/images/$picture.png"
  echo "docs/images/$picture.png"
done
