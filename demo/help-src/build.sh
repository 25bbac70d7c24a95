#!/usr/bin/env bash
# Rebuilds the demo's compiled help files demo/install/help/pawnsketch_{de,us}.chm from the
# pages here with chmcmd (Debian package fp-utils). [ALIAS] in each .hhp names the page of
# each context id, context.h gives the ids: every id of demo/install/ini/hlpidx.ini.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
mkdir -p "$here/../install/help"
for code in de us; do
    (cd "$here/$code" && chmcmd "pawnsketch_$code.hhp" >/dev/null)
    mv "$here/$code/pawnsketch_$code.chm" "$here/../install/help/"
done
