#!/usr/bin/env bash
# Rebuilds the demo's compiled help files demo/install/help/pawnsketch_{de,us}.chm from the
# pages here with chmcmd (Debian package fp-utils). [ALIAS] in each .hhp names the page of
# each context id, context.h gives the ids: every id of demo/install/ini/hlpidx.ini.
#
# chmcmd writes each alias with the full path of the folder it compiles in
# ("/home/x/help-src/de/fonts.html"); HTML Help looks that path up inside the file and shows
# a missing page for every context id. So it compiles in a folder that is the root of its
# own view of the machine (a user and mount namespace, the system folders bound in for the
# compiler): the aliases are then the pages' own paths in the file ("/fonts.html").
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
mkdir -p "$here/../install/help"
stage="$(mktemp -d)"
trap 'rm -rf "$stage"' EXIT
for code in de us; do
    root="$stage/$code"
    mkdir -p "$root"
    cp "$here/$code"/* "$root/"
    # The project's "#include ../context.h" reaches the root's own copy.
    cp "$here/context.h" "$root/"
    unshare --user --map-root-user --mount sh -c '
        for dir in usr lib lib64 bin etc; do
            [ -e "/$dir" ] || continue
            mkdir -p "$1/$dir" && mount --rbind "/$dir" "$1/$dir"
        done
        cd "$1" && chroot "$1" /usr/bin/chmcmd "$2" >/dev/null' sh "$root" "pawnsketch_$code.hhp"
    mv "$root/pawnsketch_$code.chm" "$here/../install/help/"
done
