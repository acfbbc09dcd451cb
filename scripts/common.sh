# Shared by the scripts; sourced, not run. Changes to the project's folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '%s\n' "$*"; }

# install_packages NAME...: installs the missing ones of these packages, as root or with sudo. A name may also be a
# heading of scripts/packages, for all below it.
install_packages() {
    local name package missing=()
    for name; do
        for package in $(awk -v name="$name" '
            /^# / { listed = $0 == "# " name; found += listed; next }
            listed
            END { if (!found) print name }' scripts/packages); do
            dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
        done
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    local as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    say "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qq -y --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

# The 7-Zip that reads disk images, wherever the distribution puts it.
seven_zip() {
    local place
    for place in /usr/bin/7zz /usr/lib/7zip/7z /usr/local/bin/7zz; do
        if [ -x "$place" ]; then
            say "$place"
            return 0
        fi
    done
    return 1
}

# Waits until the command succeeds, for at most a minute.
wait_until() {
    local tries
    for ((tries = 0; tries < 600; tries++)); do
        if "$@" >/dev/null 2>&1; then return 0; fi
        sleep 0.1
    done
    say "Gave up waiting for: $*" >&2
    return 1
}

# Starts a virtual display if there is none, and sets DISPLAY.
ensure_display() {
    [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] || return 0
    local number_file
    number_file=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp -noreset 3>"$number_file" >/dev/null 2>&1 &
    virtual_display_pid=$!
    wait_until test -s "$number_file"
    DISPLAY=":$(cat "$number_file")"
    export DISPLAY
    rm -f "$number_file"
}

# use_home FOLDER: programs started from now on have their home there, and touch nothing of the user's.
use_home() {
    if [[ ${WAYLAND_DISPLAY:-/} != /* ]]; then export WAYLAND_DISPLAY=$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY; fi
    unset XDG_DATA_HOME XDG_CACHE_HOME XDG_CONFIG_HOME TMPDIR
    export HOME=$1 XDG_RUNTIME_DIR=$1/.run
    mkdir -p "$HOME"
    mkdir -p -m 0700 "$XDG_RUNTIME_DIR"
}
