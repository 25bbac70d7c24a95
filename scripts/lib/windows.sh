# Shared by scripts/test-windows, scripts/package-windows and scripts/demo --windows: the
# cross build for 64-bit Windows (MinGW-w64 against the Qt kit in shared/windows) and Wine.
# shellcheck shell=bash
# Needs common.sh first (SK_ROOT, SK_BUILD, sk_install_deps).

SK_BUILD_WIN="${SK_BUILD_WIN:-$SK_ROOT/build-win}"
# The kit lies beside the project; a clone elsewhere finds the workplace's copy.
if [ -z "${SK_WINDOWS_KIT:-}" ]; then
    SK_WINDOWS_KIT="$SK_ROOT/../shared/windows"
    [ -d "$SK_WINDOWS_KIT" ] || [ ! -d /work/shared/windows ] || SK_WINDOWS_KIT=/work/shared/windows
fi
SK_QT_WIN="$SK_BUILD_WIN/qt6-mingw"
SK_SODIUM_WIN="$SK_BUILD_WIN/libsodium-mingw"

# Host Qt of the same version for moc, rcc and uic; wine64 alone runs 64-bit programs (no
# i386 architecture needed); xdotool sees the package's window appear under Xvfb, and
# ImageMagick's import takes its picture; DejaVu gives the offscreen GUI tests their fonts.
# Wine's own fonts (Tahoma, its Windows UI font) come apart from it: without them every
# window falls back to a serif. Qt's translations are the same files on every system.
# osslsigncode (with a certificate from openssl) signs the files the Authenticode test checks.
SK_WIN_PACKAGES=(
    cmake ninja-build zstd
    qt6-base-dev qt6-base-dev-tools qt6-translations-l10n
    mingw-w64 wine wine64 fonts-wine osslsigncode openssl
    xvfb xauth xdotool imagemagick fonts-dejavu-core
)
SK_WIN_FONTS=/usr/share/fonts/truetype/dejavu

sk_win_install_deps() {
    local linux=("${SK_PACKAGES[@]}")
    SK_PACKAGES=("${SK_WIN_PACKAGES[@]}")
    sk_install_deps
    SK_PACKAGES=("${linux[@]}")
}

# The kit (Qt, and libsodium, linked statically) is unpacked into the build folder again
# whenever its archive changes.
sk_win_unpack() {
    local archive="$SK_WINDOWS_KIT/$1" folder="$2" stamp
    [ -f "$archive" ] || { echo "Kit for Windows not found: $archive" >&2; return 1; }
    stamp="$(stat -c '%s %Y' "$archive")"
    if [ "$(cat "$folder/.unpacked" 2>/dev/null)" != "$stamp" ]; then
        rm -rf "$folder"
        mkdir -p "$SK_BUILD_WIN"
        tar -C "$SK_BUILD_WIN" --zstd -xf "$archive"
        echo "$stamp" > "$folder/.unpacked"
    fi
}
sk_win_unpack_kit() {
    sk_win_unpack qt6.4.2-mingw64.tar.zst "$SK_QT_WIN"
    sk_win_unpack libsodium-1.0.18-mingw64.tar.zst "$SK_SODIUM_WIN"
}

# Configures and builds the given targets, or SupportKit.exe, the tools and every test.
# Warnings fail the build only in CI, as in sk_build.
sk_win_build() {
    local werror=OFF
    [ "${CI:-}" = true ] && werror=ON
    sk_win_unpack_kit
    cmake -S "$SK_ROOT" -B "$SK_BUILD_WIN" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$SK_QT_WIN/toolchain-mingw.cmake" \
        -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
        -DCMAKE_CROSSCOMPILING_EMULATOR="$SK_ROOT/scripts/lib/wine-test" \
        -DSK_SODIUM_WIN="$SK_SODIUM_WIN" -DSUPPORTKIT_WERROR="$werror"
    if [ $# -gt 0 ]; then
        cmake --build "$SK_BUILD_WIN" --target "$@"
    else
        cmake --build "$SK_BUILD_WIN"
    fi
}

# The plugins SupportKit loads: the Windows platform, the native style, and TLS through
# Windows' own Schannel for servers that send it on to https. It reads no image format that
# Qt does not have built in.
SK_WIN_PLUGINS=(platforms/qwindows.dll styles/qwindowsvistastyle.dll tls/qschannelbackend.dll)
SK_WIN_TRANSLATIONS=(qtbase_de.qm qtbase_en.qm)

# Packs the built SupportKit.exe with the kit's libraries it and its plugins import, found as
# a deployment tool finds them (the import tables, followed through), into
# SupportKit-<version>-win64.zip in the build folder, all at the zip's root: unpacked into
# Pawnsketch's folder, it runs there. Prints the zip's path.
sk_win_package() {
    local version stage zip queue=() seen=" " file dll
    version="$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$SK_BUILD_WIN/CMakeCache.txt")"
    stage="$SK_BUILD_WIN/package/SupportKit-$version-win64"
    zip="$SK_BUILD_WIN/SupportKit-$version-win64.zip"
    rm -rf "$stage" "$zip"
    mkdir -p "$stage"
    x86_64-w64-mingw32-strip -o "$stage/SupportKit.exe" "$SK_BUILD_WIN/SupportKit.exe"
    queue+=("$stage/SupportKit.exe")
    for file in "${SK_WIN_PLUGINS[@]}"; do
        mkdir -p "$stage/$(dirname "$file")"
        cp "$SK_QT_WIN/plugins/$file" "$stage/$file"
        queue+=("$stage/$file")
    done
    while [ ${#queue[@]} -gt 0 ]; do
        file="${queue[0]}"
        queue=("${queue[@]:1}")
        for dll in $(x86_64-w64-mingw32-objdump -p "$file" | sed -n 's/^[[:space:]]*DLL Name: //p'); do
            # Anything not in the kit is Windows' own.
            [ -f "$SK_QT_WIN/bin/$dll" ] || continue
            case "$seen" in *" $dll "*) continue ;; esac
            seen+="$dll "
            cp "$SK_QT_WIN/bin/$dll" "$stage/$dll"
            queue+=("$stage/$dll")
        done
    done
    # Qt's own texts in the program's languages, where Qt's deployment puts them.
    mkdir -p "$stage/translations"
    for file in "${SK_WIN_TRANSLATIONS[@]}"; do
        cp "/usr/share/qt6/translations/$file" "$stage/translations/"
    done
    (cd "$stage" && cmake -E tar cf "$zip" --format=zip -- *)
    echo "$zip"
}

# A Windows path for a Linux one, as Wine maps the root folder to drive Z:.
sk_wine_path() {
    local path
    path="$(realpath -m "$1")"
    printf 'Z:%s' "${path//\//\\}"
}

# A Wine prefix in folder $1, made when missing. QT_ variables of the Linux environment do
# not reach Windows programs: the prefix's own environment carries QT_QPA_PLATFORM=$2 when
# $2 is given.
sk_wine_prefix_at() {
    export WINEPREFIX="$1" WINEARCH=win64 WINEDEBUG=-all
    # No Mono or Gecko installer: nothing here needs them, and they would ask.
    export WINEDLLOVERRIDES="mscoree,mshtml="
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        mkdir -p "$WINEPREFIX"
        wineboot -i >/dev/null 2>&1
        # Windows programs take their UI font from the message font, which Wine names
        # "MS Shell Dlg", standing for its own Tahoma. Debian's Wine does not load its own fonts
        # from where fonts-wine puts them, so the name stands for nothing and Qt falls back to a
        # serif; in the prefix's font folder every Wine finds them.
        cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
    fi
    if [ -n "${2:-}" ]; then
        wine reg add 'HKCU\Environment' /v QT_QPA_PLATFORM /d "$2" /f >/dev/null 2>&1
    fi
    # Offscreen, Qt on Windows reads fonts from one folder only, by default one the kit does
    # not have: without any, every text measures wrong.
    if [ "${2:-}" = offscreen ]; then
        wine reg add 'HKCU\Environment' /v QT_QPA_FONTDIR /d "$(sk_wine_path "$SK_WIN_FONTS")" /f >/dev/null 2>&1
    fi
    wineserver -w
}

# A throwaway prefix, removed when the script ends, like every other one it made.
SK_WINE_PREFIXES=()
sk_wine_prefix() {
    local prefix
    prefix="$(mktemp -d "${TMPDIR:-/tmp}/supportkit-wine.XXXXXX")"
    SK_WINE_PREFIXES+=("$prefix")
    trap sk_wine_cleanup EXIT
    sk_wine_prefix_at "$prefix" "${1:-}"
}

# An X display of its own for Wine's windows, in DISPLAY, ended with the script.
SK_XVFB_PIDS=()
sk_xvfb() {
    local display
    display="$(mktemp)"
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$display" 2>/dev/null &
    SK_XVFB_PIDS+=($!)
    trap sk_wine_cleanup EXIT
    for _ in $(seq 100); do [ -s "$display" ] && break; sleep 0.1; done
    if [ ! -s "$display" ]; then
        echo "Xvfb did not start." >&2
        rm -f "$display"
        return 1
    fi
    export DISPLAY=":$(cat "$display")"
    rm -f "$display"
}

sk_wine_cleanup() {
    local prefix pid
    for prefix in "${SK_WINE_PREFIXES[@]}"; do
        WINEPREFIX="$prefix" wineserver -k 2>/dev/null || true
        rm -rf "$prefix"
    done
    for pid in "${SK_XVFB_PIDS[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    SK_WINE_PREFIXES=()
    SK_XVFB_PIDS=()
}

# Starts the SupportKit.exe of the Windows installation in folder $1 as a user of a machine
# with nothing but Wine would: in a prefix of its own, from its C: drive, with no way to the
# build machine's files (the prefix's drive Z:, the Linux root, is taken away), on an Xvfb
# display of its own. Waits for its window, reports how long that took, takes a screenshot to
# $2 when given, and ends it. Fails when no window appears within 120 s.
sk_wine_show_window() {
    local installation="$1" screenshot="${2:-}" tmp rc=0 started waited
    tmp="$(mktemp -d)"
    (
        # Run as the condition of ||, where set -e does not act: each step checks itself.
        unset WINEPATH
        sk_wine_prefix || exit 1
        cp -r "$installation" "$WINEPREFIX/drive_c/Pawnsketch" || exit 1
        rm -f "$WINEPREFIX/dosdevices/z:"
        sk_xvfb || exit 1
        # Nothing but 127.0.0.1 is ever asked.
        export SUPPORTKIT_VERSION_URL="${SUPPORTKIT_VERSION_URL:-http://127.0.0.1:9/none}"
        export SUPPORTKIT_DOWNLOAD_URL="${SUPPORTKIT_DOWNLOAD_URL:-http://127.0.0.1:9/none/pawnsketch.exe}"
        export SUPPORTKIT_WEBSITE_URL="${SUPPORTKIT_WEBSITE_URL:-http://127.0.0.1:9/}"
        started=$(date +%s%N)
        # Started from drive C:, the only drive the program has.
        (cd "$WINEPREFIX/drive_c" &&
            wine 'C:\Pawnsketch\SupportKit.exe' ${SK_WINDOW_ARGS[@]+"${SK_WINDOW_ARGS[@]}"} >"$tmp/out" 2>&1) &
        if ! timeout 120 xdotool search --sync --onlyvisible --name 'Support Kit' >/dev/null 2>&1; then
            echo "No SupportKit window appeared under Wine within 120 s." >&2
            cat "$tmp/out" >&2
            exit 1
        fi
        waited=$((($(date +%s%N) - started) / 1000000))
        printf "SupportKit's window appeared under Wine after %d.%03d s.\n" $((waited / 1000)) $((waited % 1000))
        if [ -n "$screenshot" ]; then
            sleep "${SK_SCREENSHOT_DELAY:-3}"
            import -window root "$screenshot"
        fi
    ) || rc=$?
    rm -rf "$tmp"
    return $rc
}
