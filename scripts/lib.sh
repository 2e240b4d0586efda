# Shared by the scripts: installs what the build needs (Debian/Ubuntu) and builds into build/.
# shellcheck shell=bash
set -euo pipefail

KORVEL_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
KORVEL_BUILD=${KORVEL_BUILD:-$KORVEL_ROOT/build}

korvel_packages=(cmake ninja-build g++ pkg-config clang-format qt6-base-dev qt6-base-dev-tools libgl-dev libgtest-dev libgmock-dev
                 libbenchmark-dev xvfb xauth)

korvel_install_deps() {
    local missing=()
    for pkg in "${korvel_packages[@]}" "$@"; do
        dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || missing+=("$pkg")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
}

# korvel_build DIR [cmake options...]
korvel_build() {
    local dir=$1
    shift
    local werror=OFF
    [ "${CI:-}" = "true" ] && werror=ON
    cmake -S "$KORVEL_ROOT" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORVEL_WERROR=$werror "$@" >/dev/null
    cmake --build "$dir" -j "$(nproc)"
}

# korvel_step NAME COMMAND...: runs the command and prints how long it took.
korvel_step() {
    local name=$1 started=$SECONDS status=0
    shift
    echo "== $name"
    "$@" || status=$?
    echo "== $name: $((SECONDS - started)) s$([ $status = 0 ] || echo ", failed ($status)")"
    return $status
}

# True when a window can be shown: an X or Wayland display is set and answers.
korvel_has_display() {
    [ -n "${WAYLAND_DISPLAY:-}" ] && return 0
    [ -n "${DISPLAY:-}" ] || return 1
    command -v xdpyinfo >/dev/null 2>&1 || return 0
    xdpyinfo >/dev/null 2>&1
}

# korvel_package DIR: makes DIR/korvel_*.deb from a configured and built DIR; prints its path.
korvel_package() {
    local dir=$1
    rm -f "$dir"/korvel_*.deb
    (cd "$dir" && cpack -G DEB >/dev/null && ls "$PWD"/korvel_*.deb)
}

# korvel_check_package DEB: installs the package, runs both programs, removes it and checks that
# nothing of it is left under /usr. Skipped (with a note) when not root or when korvel is installed.
korvel_check_package() {
    local deb=$1
    [ -f "$deb" ] || { echo "No package was made."; return 1; }
    if [ "$(id -u)" -ne 0 ] || dpkg-query -W korvel >/dev/null 2>&1; then
        echo "Package not installed for a check (needs root and no korvel installed)."
        return 0
    fi
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$deb" >/dev/null || { echo "Could not install $deb"; return 1; }
    local status=0
    korvel-cli --help >/dev/null || status=1
    korvel --version >/dev/null || status=1
    # The window on the offscreen platform: it must still be running after two seconds.
    local started=0
    QT_QPA_PLATFORM=offscreen KORVEL_REGISTRY=$(mktemp -d)/registry.json timeout 2 korvel >/dev/null 2>&1 || started=$?
    [ $started = 124 ] || { echo "korvel did not start ($started)"; status=1; }
    DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq korvel >/dev/null
    local left
    left=$(find /usr -name 'korvel*' -o -name 'x-pod-archive.xml' 2>/dev/null)
    [ -z "$left" ] || { echo "Left after removal: $left"; status=1; }
    return $status
}

# korvel_demo_profile BUILD GAME_DIR: writes a profile "MTM2" for the sample game in GAME_DIR into the
# settings store named by $KORVEL_REGISTRY (which the caller points at a file of its own).
korvel_demo_profile() {
    local build=$1 dir=$2
    local game="Z:$(echo "$dir" | tr '/' '\\')"
    local cli=("$build/app/korvel-cli" settings)
    "${cli[@]}" set InstalledGames MTM2 >/dev/null
    "${cli[@]}" set Associate 0 >/dev/null
    local p=(--profile MTM2)
    "${cli[@]}" "${p[@]}" set Location "$game" >/dev/null
    "${cli[@]}" "${p[@]}" set Location-INI "$game\\POD.INI" >/dev/null
    "${cli[@]}" "${p[@]}" set Location-EXE "$game\\monster.exe" >/dev/null
    "${cli[@]}" "${p[@]}" set MMPA 99 >/dev/null
    "${cli[@]}" "${p[@]}" set Configurator True >/dev/null
    "${cli[@]}" "${p[@]}" set FirstRun 0 >/dev/null
    "${cli[@]}" "${p[@]}" set ExtraDirs "$game\\DOWNLOADS\\PODS" >/dev/null
    "${cli[@]}" "${p[@]}" set Recent "|$game\\TRUCKS.POD|$game\\TRAXX.POD" >/dev/null
    "${cli[@]}" "${p[@]}" set Screen M >/dev/null
}
