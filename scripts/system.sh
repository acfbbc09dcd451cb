# A clean Debian system to try things in. Sourced after common.sh, by scripts that need root. It is made in a temporary
# folder and in namespaces of its own, so its mounts and processes cannot outlive it.
#
#   enter_namespaces SCRIPT ARGUMENT...    runs the script again in namespaces, with $scratch in the environment
#   make_system SUITE                      makes the system in $root, with an ordinary user ann
#   in_system COMMAND...                   runs a command there as root
#   as_user COMMAND...                     runs a command there as ann, without a display
scratch=${scratch:-} # the temporary folder, inside the namespaces
root=$scratch/system
clean=(/usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8)

enter_namespaces() {
    if [ "$(id -u)" -ne 0 ]; then
        say "Only root can make a system to try this in." >&2
        exit 1
    fi
    scratch=$(mktemp -d /var/tmp/join-try.XXXXXX)
    export scratch
    system_pid=
    trap 'kill -KILL $system_pid 2>/dev/null || true; wait; rm -rf --one-file-system "$scratch"' EXIT
    trap 'exit 1' HUP INT TERM
    unshare --mount --pid --fork --kill-child --mount-proc "$@" &
    system_pid=$!
    local status=0
    wait "$system_pid" || status=$?
    exit "$status"
}

# Shows its output only if it fails.
in_system() {
    if ! chroot "$root" "${clean[@]}" DEBIAN_FRONTEND=noninteractive "$@" >"$scratch/said" 2>&1; then
        cat "$scratch/said" >&2
        return 1
    fi
}

as_user() {
    chroot --userspec=ann:ann "$root" "${clean[@]}" HOME=/home/ann USER=ann XDG_RUNTIME_DIR=/run/user/1000 \
        QT_QPA_PLATFORM=offscreen "$@"
}

# The Debian archives as this machine reaches them, as lines of a sources.list for the suite.
archives_of() {
    local suite=$1 mirror
    # shellcheck disable=SC2016 # apt-get's own names
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' 'Label: Debian' | head -n 1)
    say "deb ${mirror:-http://deb.debian.org/debian} $suite main"
}

make_system() {
    local suite=$1 sources
    apt-get indextargets 'Created-By: Packages' | grep -q . || apt-get update -qq
    sources=$(archives_of "$suite")
    say "Making a clean system: Debian $suite"
    mkdir -m 0755 "$root"
    mount --bind "$root" "$root" # namespaces can only be made in a root that is a mount
    debootstrap --variant=minbase "$suite" "$root" "$(cut -d' ' -f2 <<<"$sources")" >"$scratch/debootstrap.log" 2>&1 || {
        tail -n 20 "$scratch/debootstrap.log" >&2
        return 1
    }
    say "$sources" >"$root/etc/apt/sources.list"
    cp /etc/resolv.conf "$root/etc/resolv.conf"
    mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d" # no service is started
    chmod 0755 "$root/usr/sbin/policy-rc.d"
    in_system useradd --create-home --uid 1000 ann
    install -d -m 0700 -o 1000 -g 1000 "$root/run/user/1000"
    in_system apt-get update
}
