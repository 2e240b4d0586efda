# Shared by the scripts: installs what the build needs (Debian/Ubuntu) and builds into build/.
# shellcheck shell=bash
set -euo pipefail

KORVEL_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
KORVEL_BUILD=${KORVEL_BUILD:-$KORVEL_ROOT/build}

korvel_packages=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-base-dev-tools libgl-dev libgtest-dev libgmock-dev
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
