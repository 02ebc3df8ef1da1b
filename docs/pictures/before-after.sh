#!/usr/bin/env bash
# Makes before-after.jpg of what script/demo left in a folder: before-after.sh [FOLDER]
# (default: out/). The upper row of each pair of rows shows the pictures of samples/.
set -euo pipefail

here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
root=$here/../..
out=${1-$root/out}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Samples are numbered by name, as the demo numbers them.
mapfile -t samples < <(find "$root/samples" -maxdepth 1 -type f \
    ! -name '*.md' ! -name '*.sh' ! -name '*.qfk' -printf '%f\n' | LC_ALL=C sort)
rows=()
for row in 'mountains.jpg fruit.jpeg drops.bmp toys.psd' 'sea.png dunes.sgi aurora.tif rose-window.gif'; do
    before=()
    after=()
    for name in $row; do
        for i in "${!samples[@]}"; do
            [[ ${samples[i]} == "$name" ]] || continue
            fit=(-resize '280x186^' -gravity center -extent 280x186
                -bordercolor white -border 2)
            convert "$root/samples/${name}[0]" "${fit[@]}" "$scratch/before-$name.png"
            convert "$out/Sample$((i + 1)).jpg" "${fit[@]}" "$scratch/after-$name.png"
            before+=("$scratch/before-$name.png")
            after+=("$scratch/after-$name.png")
        done
    done
    convert "${before[@]}" +append "$scratch/${#rows[@]}.png"
    rows+=("$scratch/${#rows[@]}.png")
    convert "${after[@]}" +append "$scratch/${#rows[@]}.png"
    rows+=("$scratch/${#rows[@]}.png")
done
convert "${rows[@]}" -append -strip -quality 86 "$here/before-after.jpg"
