# Shared by scripts/test and scripts/demo: installs what is missing and builds.
# shellcheck shell=bash

SK_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
SK_BUILD="${SK_BUILD:-$SK_ROOT/build}"

# Debian packages the build, the tests, the demo and the benchmark need (libqt6svg6
# carries Qt's SVG image and icon plugins, qt6-translations-l10n the German texts of Qt's own
# dialogs and menus; time and curl serve bench/run_download_bench.sh; libsodium checks the
# publisher's signatures, minisign makes the demo's).
SK_PACKAGES=(
    cmake ninja-build g++ pkg-config libfontconfig-dev libchm-dev libglib2.0-dev libsodium-dev minisign
    qt6-base-dev qt6-base-dev-tools libgl-dev libqt6svg6 qt6-translations-l10n
    python3 xvfb xauth fonts-dejavu-core
    time curl
)

sk_install_deps() {
    local missing=() p
    for p in "${SK_PACKAGES[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    if [ "$(id -u)" -ne 0 ]; then
        sudo="sudo"
    fi
    $sudo apt-get update -q
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# Warnings fail the build only in CI: a user's newer compiler may warn about code that CI
# accepted, and that must not stop the demo.
sk_build() {
    local werror=OFF
    [ "${CI:-}" = true ] && werror=ON
    cmake -S "$SK_ROOT" -B "$SK_BUILD" -G Ninja \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSUPPORTKIT_WERROR="$werror" "$@"
    cmake --build "$SK_BUILD"
}
