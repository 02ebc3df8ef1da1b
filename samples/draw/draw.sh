#!/usr/bin/env bash
# Draws the sample pictures and encodes them, each in a format of its own:
# draw.sh PROGRAM [FOLDER], where PROGRAM is draw_samples and FOLDER has its pictures already.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
samples=$root/samples

if (($# < 1 || $# > 2)) || [[ ${1-} == -* ]]; then
    echo "usage: samples/draw/draw.sh PROGRAM [FOLDER-OF-DRAWN-PICTURES]" >&2
    exit 2
fi
if (($# == 2)); then
    drawn=$2
else
    drawn=$(mktemp -d)
    trap 'rm -rf "$drawn"' EXIT
    "$1" "$drawn"
fi

cp -- "$drawn/sample.ppm" "$root/assets/sample.ppm"
# ImageMagick writes the times of day into some files; the same picture should be the same file.
encode() {
    convert "$drawn/$1.ppm" "${@:3}" +set date:create +set date:modify -strip "$2"
}
encode mountains "$samples/mountains.jpg" -quality 90 -sampling-factor 4:2:0
encode fruit "$samples/fruit.jpeg" -quality 92
encode sea "$samples/sea.png" -resize 900x600 -define png:compression-level=9
encode aurora "$samples/aurora.tif" -resize 600x400 -compress zip
encode rose-window "$samples/rose-window.gif" -dither FloydSteinberg -colors 256
# The header of 40 bytes, which every reader of BMP knows.
encode drops "bmp3:$samples/drops.bmp" -resize 560x420
encode toys "$samples/toys.psd" -resize 500x435 -compress rle
encode milky-way "ppm:-" -resize 480x360 | ppmtotga -rgb -quiet >"$samples/milky-way.tga"
encode tartan "ppm:-" -resize 400x300 | ppmtopcx -24bit -quiet >"$samples/tartan.pcx"
encode dunes "ppm:-" -resize 560x350 | pnmtosgi -rle -quiet >"$samples/dunes.sgi"
