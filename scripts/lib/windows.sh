# Shared by scripts/test-windows, scripts/package-windows and scripts/demo --windows: the
# cross build for 64-bit Windows (MinGW-w64 against the Qt kit in shared/windows) and Wine.
# shellcheck shell=bash
# Needs common.sh first (SK_ROOT, SK_BUILD, sk_install_deps).

SK_BUILD_WIN="${SK_BUILD_WIN:-$SK_ROOT/build-win}"
SK_WINDOWS_KIT="${SK_WINDOWS_KIT:-$SK_ROOT/../shared/windows}"
SK_QT_WIN="$SK_BUILD_WIN/qt6-mingw"

# Host Qt of the same version for moc, rcc and uic; wine64 alone runs 64-bit programs (no
# i386 architecture needed); xdotool sees the package's window appear under Xvfb.
SK_WIN_PACKAGES=(
    cmake ninja-build zstd
    qt6-base-dev qt6-base-dev-tools
    mingw-w64 wine wine64
    xvfb xauth xdotool
)

sk_win_install_deps() {
    local linux=("${SK_PACKAGES[@]}")
    SK_PACKAGES=("${SK_WIN_PACKAGES[@]}")
    sk_install_deps
    SK_PACKAGES=("${linux[@]}")
}

# The kit is unpacked into the build folder again whenever the archive changes.
sk_win_unpack_kit() {
    local archive="$SK_WINDOWS_KIT/qt6.4.2-mingw64.tar.zst" stamp
    [ -f "$archive" ] || { echo "Qt kit for Windows not found: $archive" >&2; return 1; }
    stamp="$(stat -c '%s %Y' "$archive")"
    if [ "$(cat "$SK_QT_WIN/.unpacked" 2>/dev/null)" != "$stamp" ]; then
        rm -rf "$SK_QT_WIN"
        mkdir -p "$SK_BUILD_WIN"
        tar -C "$SK_BUILD_WIN" --zstd -xf "$archive"
        echo "$stamp" > "$SK_QT_WIN/.unpacked"
    fi
}

# Configures and builds SupportKit.exe, the tools and every test. Warnings fail the build only
# in CI, as in sk_build.
sk_win_build() {
    local werror=OFF
    [ "${CI:-}" = true ] && werror=ON
    sk_win_unpack_kit
    cmake -S "$SK_ROOT" -B "$SK_BUILD_WIN" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$SK_QT_WIN/toolchain-mingw.cmake" \
        -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
        -DCMAKE_CROSSCOMPILING_EMULATOR="$SK_ROOT/scripts/lib/wine-test" \
        -DSUPPORTKIT_WERROR="$werror" "$@"
    cmake --build "$SK_BUILD_WIN"
}

# A Windows path for a Linux one, as Wine maps the root folder to drive Z:.
sk_wine_path() {
    local path
    path="$(realpath -m "$1")"
    printf 'Z:%s' "${path//\//\\}"
}

# A throwaway Wine prefix for this script, removed when it ends. QT_ variables of the Linux
# environment do not reach Windows programs: the prefix's own environment carries them.
sk_wine_prefix() {
    WINEPREFIX="$(mktemp -d "${TMPDIR:-/tmp}/supportkit-wine.XXXXXX")"
    export WINEPREFIX WINEARCH=win64 WINEDEBUG=-all
    # No Mono or Gecko installer: nothing here needs them, and they would ask.
    export WINEDLLOVERRIDES="mscoree,mshtml="
    trap sk_wine_cleanup EXIT
    wineboot -i >/dev/null 2>&1
    wine reg add 'HKCU\Environment' /v QT_QPA_PLATFORM /d "${1:-offscreen}" /f >/dev/null 2>&1
    wineserver -w
}

sk_wine_cleanup() {
    [ -n "${WINEPREFIX:-}" ] || return 0
    wineserver -k 2>/dev/null || true
    rm -rf "$WINEPREFIX"
}
