#!/bin/sh
# Draws Resources/icon.png: a blue mailbox tray with a small clock, 64x64.
# Run it again after changing the drawing; the result is committed.
set -e
out="${1:-$(dirname "$0")/../Resources/icon.png}"
convert -size 64x64 xc:none \
    -fill '#2f6fd6' -stroke '#1d4a94' -strokewidth 2 -draw 'roundrectangle 6,22 50,56 6,6' \
    -fill '#ffffff' -stroke none -draw 'polygon 10,26 28,42 46,26' \
    -fill none -stroke '#1d4a94' -strokewidth 2 -draw 'polyline 10,26 28,42 46,26' \
    -fill '#ffffff' -stroke '#e07a10' -strokewidth 3 -draw 'circle 46,20 46,6' \
    -stroke '#e07a10' -strokewidth 2 -draw 'line 46,20 46,11' -draw 'line 46,20 52,23' \
    -strip "PNG32:$out"
