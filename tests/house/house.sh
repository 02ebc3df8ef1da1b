#!/usr/bin/env bash
# Checks of the house around the code: house.sh ROOT CHECK [RUNNER]. Exit status 77 says that a
# tool for the check is missing.
set -euo pipefail

root=$1
check=$2
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "$*" >&2
    exit 1
}
need() {
    command -v "$1" >/dev/null || {
        echo "skipped: $1 is not installed"
        exit 77
    }
}

shell_scripts() {
    find "$root/script" "$root/.ci" "$root/samples" "$root/docs" "$root/packaging" \
        "$root/tests/house" "$root/tests/packaging" -type f \
        -exec grep -lE -m1 '^#!/usr/bin/env bash' {} +
}

# Prints each include of a room's header from a room that may not use it.
forbidden_includes() {
    local tree=$1 room allowed other rooms
    rooms=$(grep -v '^#' "$here/rooms.txt" | cut -d: -f1)
    while IFS=: read -r room allowed; do
        [[ $room == '#'* || ! -d $tree/$room ]] && continue
        for other in $rooms; do
            [[ " $room $allowed " == *" $other "* ]] && continue
            grep -rnE --include='*.h' --include='*.cpp' "^ *# *include *[\"<](\.\./)*$other/" \
                "$tree/$room" || true
        done
    done <"$here/rooms.txt"
}

case $check in
    scripts_parse)
        scripts=$(shell_scripts)
        [[ -n $scripts ]] || fail "no scripts found"
        while read -r script; do
            bash -n "$script"
            [[ -x $script ]] || fail "$script is not executable"
            grep -q '^set -euo pipefail$' "$script" || fail "$script goes on after failures"
        done <<<"$scripts"
        ;;
    scripts_are_clean)
        need shellcheck
        shell_scripts | xargs -d '\n' shellcheck
        ;;
    scripts_tell_their_usage)
        for script in bootstrap demo test bench docs package screenshots reliability with-screen; do
            "$root/script/$script" --help | grep -q "^usage: script/$script" ||
                fail "script/$script --help does not tell the usage"
        done
        ;;
    scripts_refuse_what_they_do_not_know)
        for script in bootstrap demo bench docs package screenshots reliability with-screen; do
            status=0
            "$root/script/$script" --nonsense 2>"$scratch/said" || status=$?
            ((status == 2)) || fail "script/$script --nonsense ends with $status"
            (($(wc -l <"$scratch/said") == 1)) || fail "script/$script complains in more than one line"
        done
        status=0
        "$root/script/test" --fuzz=soon 2>"$scratch/said" || status=$?
        ((status == 2)) || fail "script/test --fuzz=soon ends with $status"
        status=0
        "$root/script/test" --slurm=some 2>"$scratch/said" || status=$?
        ((status == 2)) || fail "script/test --slurm=some ends with $status"
        ;;
    array_refuses_what_shards_cannot_do)
        array=$root/packaging/slurm/tessarine-array
        "$array" --help | grep -q '^usage: tessarine-array' || fail "--help does not tell the usage"
        refused() {
            local expected=$1 word=$2 status=0
            shift 2
            (cd "$scratch" && "$array" "$@") >"$scratch/printed" 2>"$scratch/said" || status=$?
            ((status == expected)) || fail "tessarine-array $* ends with $status"
            [[ ! -s $scratch/printed && $(wc -l <"$scratch/said") == 1 ]] ||
                fail "tessarine-array $* does not complain in one line: $(cat "$scratch/said")"
            grep -qF -- "$word" "$scratch/said" ||
                fail "tessarine-array $* says: $(cat "$scratch/said")"
        }
        for option in $("$array" --help | grep -oE '^  --[a-z-]+'); do
            sed 's/\\-/-/g' "$root/docs/man/tessarine-array.1" | grep -qE "^\.BI? $option( |$)" ||
                fail "the manual page does not tell $option"
        done
        refused 2 '--nonsense' --nonsense
        refused 2 'expected --'
        refused 2 'expected --' --shards 4
        refused 2 '--shards: a value' --shards
        refused 2 "'0' is no number" --shards 0 -- --to out in
        refused 2 "'-3' is no number" --max-shards=-3 -- --to out in
        refused 2 "'soon' is no time" --task-start soon -- --to out in
        for option in --shard --report --failed-list --merge-reports --dry-run; do
            refused 2 "$option" -- --to out "$option" 0/2 in
        done
        refused 2 '--report' -- --to out --report=r in
        refused 2 '--from' -- --to out --from -
        refused 2 '--from' -- --to out --from=-
        refused 3 "'$scratch/none' is no program" --program "$scratch/none" -- --to out in
        [[ -z $(find "$scratch" -mindepth 1 -type d) ]] || fail "a refusal leaves a folder"
        ;;
    demo_refuses_a_folder_that_is_not_there)
        status=0
        "$root/script/demo" "$scratch/no such folder" 2>"$scratch/said" || status=$?
        ((status == 1)) || fail "it ends with $status"
        grep -qxF "demo: no such folder: $scratch/no such folder" "$scratch/said" ||
            fail "it says: $(cat "$scratch/said")"
        ;;
    presets_parse)
        for kind in configure build test; do
            listed=$(cd -- "$root" && cmake --list-presets="$kind")
            for preset in release debug headless asan ubsan tsan; do
                grep -qE "^ *\"$preset\"" <<<"$listed" || fail "no $kind preset '$preset'"
            done
        done
        ;;
    rooms_keep_their_floors)
        found=$(forbidden_includes "$root")
        [[ -z $found ]] || fail "these includes look where their room may not:
$found"
        ;;
    a_look_upstairs_is_found)
        mkdir -p "$scratch/pixels" "$scratch/filters" "$scratch/imagefiles"
        echo '#include "filters/lookup.h"' >"$scratch/pixels/bad.h"
        echo '#include "pixels/pixel_buffer.h"' >"$scratch/filters/good.cpp"
        echo '#include "../filters/lookup.h"' >"$scratch/imagefiles/bad.cpp"
        found=$(forbidden_includes "$scratch" | sed "s,$scratch/,," | sort)
        expected='imagefiles/bad.cpp:1:#include "../filters/lookup.h"
pixels/bad.h:1:#include "filters/lookup.h"'
        [[ $found == "$expected" ]] || fail "found: $found"
        ;;
    the_build_knows_the_same_rooms)
        while IFS=: read -r room allowed; do
            [[ $room == '#'* || ! -f $root/$room/CMakeLists.txt ]] && continue
            used=$(tr '\n' ' ' <"$root/$room/CMakeLists.txt" |
                sed -nE "s/.*tessarine_room\( *$room([^)]*)\).*/\1/p" |
                sed -E 's/ LIBRARIES .*//; s/ VECTORISED//; s/.* USES//; s/^ +//; s/ +$//' | tr -s ' ')
            [[ $used == "$(xargs <<<"$allowed")" ]] ||
                fail "$room/CMakeLists.txt uses '$used', rooms.txt says '$allowed'"
        done <"$here/rooms.txt"
        ;;
    demo_list_is_what_its_script_writes)
        "$root/samples/demo-list.sh" | cmp - "$root/samples/demo.qfk"
        ;;
    sample_picture_has_its_size)
        (($(head -c 15 "$root/assets/sample.ppm" | tr '\n' ' ' | grep -c '^P6 200 174 255 ') == 1)) ||
            fail "assets/sample.ppm does not begin with P6 200 174 255"
        (($(wc -c <"$root/assets/sample.ppm") == 15 + 200 * 174 * 3)) ||
            fail "assets/sample.ppm has another length than its header says"
        ;;
    samples_stay_small)
        bytes=$(find "$root/samples" -maxdepth 1 -type f -printf '%s\n' | awk '{ sum += $1 } END { print sum }')
        ((bytes < 8000000)) || fail "the sample pictures have $bytes bytes, 8000000 at most are wanted"
        ;;
    programs_load_no_decoders)
        shift 2
        need readelf
        for program in "$@"; do
            loaded=$(readelf -d "$program" | grep -oE '\[lib[^]]*\]')
            [[ -n $loaded ]] || fail "$program loads nothing at all"
            decoders=$(grep -E 'freeimage|exiv2|libIL|rsvg|wmf|emf2svg|libtiff|libgif|imagequant|cairo' <<<"$loaded" || true)
            [[ -z $decoders ]] || fail "$program loads what its helper is there for: $decoders"
        done
        ;;
    links_lead_somewhere)
        while IFS=: read -r page target; do
            [[ -e $(dirname -- "$page")/$target ]] || fail "$page: nothing at $target"
        done < <(cd -- "$root" && find . \( -name build -o -name out -o -name .git \) -prune -o \
            -name '*.md' -print0 | xargs -0 grep -HoE '\]\([^)#]+' |
            sed 's/:\](/:/' | grep -vE ':(https?|mailto):' |
            sed "s,^\./,$root/,")
        ;;
    *) fail "no such check: $check" ;;
esac
