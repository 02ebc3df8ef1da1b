#!/usr/bin/env bash
# Writes the function list of the demo, samples/demo.qfk, to standard output:
#
#   samples/demo-list.sh > samples/demo.qfk
#
# A function list is a row of records of 124 bytes, little-endian, texts padded with blanks.
set -euo pipefail

# integer BYTES VALUE
integer() {
    local i
    for ((i = 0; i < $1; ++i)); do
        # shellcheck disable=SC2059  # the format is the byte
        printf "\\x$(printf '%02x' $((($2 >> (8 * i)) & 255)))"
    done
}

# row NAME ID PARAMETER PARAMETER PARAMETER
row() {
    printf '%-30s%-30s' "$1" "$2"
    integer 4 "$3"
    integer 4 "$4"
    integer 4 "$5"
    integer 4 0       # the two colours, which none of these functions uses
    integer 4 0
    integer 2 0       # the option
    printf '%-30s' '' # the style word
    integer 4 0       # the picked point
    integer 4 0
    integer 4 0       # reserved
}

# Warmer, with more contrast and colour, and the middle tones a little lighter again.
row 'Tweak RGB' 25 12 3 -10
row 'Contrast' 2 18 0 0
row 'Saturation' 3 25 0 0
row 'Gamma Correction' 4 6 0 0
