#!/usr/bin/env bash
# Checks of what an installation brings along: packaging.sh ROOT BUILD CHECK [CMAKE]. Exit status 77
# says that a tool for the check is missing.
set -euo pipefail

root=$1
build=$2
check=$3
desktop=$root/packaging/desktop
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

# The kinds of list as a system's table of names has them.
list_globs() {
    sed -nE 's/.*mime-type type="([^"]*)".*/50:\1/p; s/.*glob pattern="([^"]*)".*/\1/p' \
        "$desktop/tessarine.xml" | paste -sd ':\n'
}

case $check in
    desktop_entry_is_valid)
        need desktop-file-validate
        said=$(desktop-file-validate "$desktop/tessarine.desktop")
        [[ -z $said ]] || fail "$said"
        ;;
    desktop_entry_takes_what_the_window_reads)
        # A system knows more kinds of file than the window reads, and fewer extensions.
        globs=/usr/share/mime/globs2
        [[ -f $globs ]] || {
            echo "skipped: shared-mime-info is not installed"
            exit 77
        }
        taken=$(sed -n 's/^MimeType=//p' "$desktop/tessarine.desktop" | tr ';' '\n')
        extensions=$(sed -nE "s/.*'@\(([^)]*)\)'.*/\1/p" "$build/packaging/completions/bash/tessarine")
        [[ $extensions == *'|'* ]] || fail "the completions tell no extensions"
        for extension in ${extensions//|/ }; do
            types=$({ cat "$globs"; list_globs; } | grep -E ":\*\.$extension(:|\$)" | cut -d: -f2) || true
            # Drawings of an office program bear the extension of a kind of picture, too.
            [[ -z $types ]] || grep -qxF "$types" <<<"$taken" ||
                fail "tessarine.desktop does not take files *.$extension, which are $types"
        done
        ;;
    software_centres_understand)
        need appstreamcli
        appstreamcli validate --no-net "$build/packaging/tessarine.metainfo.xml" >"$scratch/said" ||
            fail "$(cat "$scratch/said")"
        # The pictures shown have to be those that there are.
        while read -r width height name; do
            picture=$(find "$root/docs/pictures" "$root/assets/Help" -maxdepth 1 -name "$name")
            [[ -n $picture ]] || fail "no picture '$name' for software centres"
            [[ $(file "$picture") == *" $width x $height,"* ]] ||
                fail "$name is not $width x $height pixels large"
        done < <(sed -nE 's,.*<image .*width="([0-9]+)" height="([0-9]+)".*/([^/<]+)</image>.*,\1 \2 \3,p' \
            "$desktop/tessarine.metainfo.xml.in")
        ;;
    kinds_of_file_are_told)
        for tool in xmllint update-mime-database gio; do need "$tool"; done
        xmllint --noout "$desktop/tessarine.xml" "$desktop"/icons/*.svg
        mkdir -p "$scratch/mime/packages"
        cp "$desktop/tessarine.xml" "$scratch/mime/packages"
        XDG_DATA_HOME=$scratch update-mime-database "$scratch/mime" 2>"$scratch/said"
        [[ ! -s $scratch/said ]] || fail "$(cat "$scratch/said")"
        printf '%-124s' Blur >"$scratch/warm.QFK"
        printf '%-150s' /a/picture.png >"$scratch/basket.qpkl"
        for pair in warm.QFK:function basket.qpkl:picture; do
            XDG_DATA_HOME=$scratch gio info -a standard::content-type "$scratch/${pair%:*}" |
                grep -q "content-type: application/x-tessarine-${pair#*:}-list$" ||
                fail "${pair%:*} is not told as a ${pair#*:} list"
        done
        ;;
    installation_has_its_places)
        cmake=$4
        DESTDIR=$scratch "$cmake" --install "$build" --prefix /opt/tessarine >/dev/null
        outside=$(find "$scratch" -mindepth 1 -not -type d -not -path "$scratch/opt/tessarine/*")
        [[ -z $outside ]] || fail "outside of the prefix: $outside"
        cd "$scratch/opt/tessarine"
        wanted=(
            bin/tessarine-batch lib/tessarine/tessarine-codec
            share/bash-completion/completions/tessarine-batch
            share/zsh/vendor-completions/_tessarine-batch
            share/fish/vendor_completions.d/tessarine-batch.fish
            share/man/man1/tessarine-batch.1 share/doc/tessarine-batch/copyright
        )
        if [[ -e lib/tessarine/tessarine ]]; then
            hicolor=share/icons/hicolor
            wanted+=(
                bin/tessarine lib/tessarine/Help/default.htm share/man/man1/tessarine.1
                share/applications/tessarine.desktop share/metainfo/tessarine.metainfo.xml
                share/mime/packages/tessarine.xml share/bash-completion/completions/tessarine
                share/zsh/vendor-completions/_tessarine
                share/fish/vendor_completions.d/tessarine.fish
            )
            for icon in apps/tessarine mimetypes/application-x-tessarine-{function,picture}-list; do
                wanted+=("$hicolor/scalable/$icon.svg")
                for side in 16 22 24 32 48 64 128 256; do
                    picture=$hicolor/${side}x$side/$icon.png
                    wanted+=("$picture")
                    [[ $(file "$picture") == *" $side x $side,"* ]] || fail "$picture has another size"
                done
            done
        fi
        for name in "${wanted[@]}"; do
            [[ -s $name ]] || fail "no $name was installed"
        done
        # Links have to lead on wherever the tree comes to lie.
        while read -r link; do
            [[ $(readlink "$link") != /* ]] || fail "$link is bound to its place"
        done < <(find . -type l)
        ;;
    manual_pages_have_no_warnings)
        need groff
        for page in "$build/packaging/man/tessarine-batch.1" "$root"/docs/man/*.1; do
            groff -man -Tutf8 -ww -z "$page" 2>"$scratch/said" ||
                fail "groff refuses $page: $(cat "$scratch/said")"
            [[ ! -s $scratch/said ]] || fail "$(cat "$scratch/said")"
        done
        ;;
    windows_manual_page_tells_every_option)
        options=$(grep -oE -- '^  --[a-z-]+' "$build/packaging/help.txt" | tr -d ' ')
        [[ -n $options ]] || fail "the window's --help tells no options"
        for option in $options; do
            sed 's/\\-/-/g' "$root/docs/man/tessarine.1" | grep -qE -- "^\.(B|BI|BR) $option( |$)" ||
                fail "the manual page of the window does not tell $option"
        done
        ;;
    completions_parse)
        for shell in bash zsh fish; do
            command -v "$shell" >/dev/null || continue
            for script in "$build/packaging/completions/$shell"/*; do
                "$shell" -n "$script" || fail "$shell refuses $script"
            done
        done
        ;;
    *) fail "no such check: $check" ;;
esac
