# Cases that test Join, each in a world of its own: a home folder, a web service, whatever the case adds. Sourced after
# common.sh, in namespaces that belong to the caller. The caller sets $scratch, a folder with images/, standins/ and
# large/Tavo.app; $build, a build folder; $section, a name; $chosen, which cases run; $at_once, how many run at a time;
# and $tried, which counts them. A case leaves its output in $scratch/$section/CASE.says, its result in CASE.result, its
# status in CASE.status.
bundle=$build/Join.app
images=(--agent-image "$scratch/images/TavoMac.dmg" --join-image "$scratch/images/JoinMac.dmg")
unset DISPLAY WAYLAND_DISPLAY
log=/dev/null service_pid='' wrapper=() virtual_display_pid=''

# try NAME COMMAND...: runs a case beside the others if it is chosen. It fails by its status.
try() {
    [[ $1 =~ $chosen ]] || return 0
    while [ "$(jobs -rp | wc -l)" -ge "$at_once" ]; do wait -n || true; done
    (
        world=$scratch/$section/${1//[ \/]/-}
        mkdir -p "$world"
        exec >"$world.says" 2>&1
        trap 'leave_world' EXIT
        "${@:2}"
    ) &
    tried=$((tried + 1))
}

# Makes the home folder for the rest of the case.
enter() {
    use_home "$world/home"
    export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 SSL_CERT_FILE=$world/service.pem
    export TAVO_STANDIN_LOG=$world/started # not on the disk that the case fills
    support="$HOME/Library/Application Support/TavoMeetingNative"
    log=$HOME/Library/Logs/TavoFendel/Join/join.log
    root=$HOME/.local/share/tavojoin/root
}

leave_world() {
    local status=$? place
    set +e
    [ $status -eq 0 ] || tail -n 15 "$world/stderr" "$log"
    end_all
    [ -z "$service_pid$virtual_display_pid" ] || kill -9 $service_pid $virtual_display_pid
    for place in home disk; do ! mountpoint -q "$world/$place" || umount -l "$world/$place"; done
    chmod -R u+rwX "$world"
    rm -rf "$world/home"
    echo $status >"$world.status"
}

# Ends everything that has its home in this world, except this shell.
end_all() {
    local process
    for process in $(grep -slzxF "HOME=$world/home" /proc/[0-9]*/environ); do
        process=${process//[^0-9]/}
        [ "$process" = $BASHPID ] || kill -9 "$process" 2>/dev/null || true
    done
}

result() { say "$*" >"$world.result"; }

expect() { # WHAT COMMAND...
    "${@:2}" || { say "not so: $1"; exit 1; }
}

within() { # SECONDS COMMAND...
    local end=$((SECONDS + $1))
    until "${@:2}" >/dev/null 2>&1; do
        [ $SECONDS -le $end ] || { say "not within $1 s: ${*:2}"; return 1; }
        sleep 0.05
    done
}

# serve [OPTION VALUE]...: starts the web service with both images, in place of the one before.
serve() {
    [ -z "$service_pid" ] || { kill -9 "$service_pid"; wait "$service_pid" || true; } 2>/dev/null
    rm -f "$world/port"
    HOME=/ "$build/tools/service/join-service" --certificate "$world/service.pem" --port-file "$world/port" \
        --log "$world/requests" "${images[@]}" "$@" >/dev/null 2>&1 &
    service_pid=$!
    within 20 test -s "$world/port"
    host=localhost:$(cat "$world/port")
}

url() { say "tavojoin://k=123456789&e=ann@example.org&wsn=$host&cav=1.4${1:-}"; }

install_programs() {
    mkdir -p "$support" "$root/Applications"
    cp -dR --preserve=mode "$scratch/standins/." "$support"
    cp -dR --preserve=mode "$bundle" "$root/Applications"
}

# Without the rights of root, whom no mode of a file would stop.
open_join() { # BUNDLE [URL]
    "${wrapper[@]}" setpriv --bounding-set -all --inh-caps -all "$1/Contents/MacOS/Join" "${@:2}" </dev/null \
        >>"$world/stderr" 2>&1 &
    join_pid=$!
}

ended() { ! grep -qs '^State:[[:space:]]*[^ZX]' "/proc/$join_pid/status"; }
says() { grep -qsF -- "$1" "$log" "$world/stderr"; }
starts() { cat "$TAVO_STANDIN_LOG/agent.txt" 2>/dev/null | grep -c '^start$' || true; }

# Waits until Join has ended, or has done nothing for longer than the pause between two downloads; sets $outcome.
come_to_rest() {
    local now before='' quiet=0 status=0
    until ended || [ $quiet -ge 45 ]; do
        now=$({ wc -c "$world/requests" "$log" "$world/stderr"; cat "/proc/$join_pid/task"/*/children; } 2>/dev/null || true)
        if [ "$now" = "$before" ]; then quiet=$((quiet + 1)); else quiet=0 before=$now; fi
        sleep 0.1
    done
    outcome='stays up'
    if ended; then
        wait "$join_pid" || status=$?
        outcome="ends with status $status"
        expect "it ends by itself, not with status $status" test $status -le 2
    fi
    [ "$(starts)" -eq 0 ] || outcome='joins'
}

# Files that Join makes on the way: nothing unfinished may be visible at any time. A whole image whose programs are not
# installed, and what zip leaves when it fails, are removed by the next run.
unfinished() {
    find "$HOME" -name '.?*.partial' -o -path "$root/Volumes/*" -o -path "$HOME/.local/share/applications/.*"
}
leftovers() {
    find "$HOME" -name '*.dmg' -o -path '*/tavojoin/tmp/zi*' -o -path '*/Applications/.*' -o -path "$support/.*"
}

expect_tidy() {
    expect "nothing is left unfinished: $(unfinished)" test -z "$(unfinished)"
    [ ! -e "$support/Tavo.app" ] || expect_whole_agent
}

expect_whole_agent() {
    diff -r --no-dereference "$scratch/standins/Tavo.app" "$support/Tavo.app" >/dev/null ||
        expect 'the agent is whole' diff -r --no-dereference "$scratch/large/Tavo.app" "$support/Tavo.app"
}

# meets SECONDS OUTCOME LINE: expects that outcome of the Join that was opened, and that line in its log.
meets() {
    local begin=$SECONDS took
    expect "it says $3" within "$1" says "$3"
    took=$((SECONDS - begin))
    [ "$2" = 'stays up' ] || within 60 ended
    come_to_rest
    expect "it $2, and not: $outcome" test "$outcome" = "$2"
    expect_tidy
    result "$outcome, after $took s: $3"
}

# joins BUNDLE [URL]: nothing is wrong from now on, so this run must join.
joins() {
    local before status=0
    before=$(starts)
    open_join "$@"
    expect 'the next run ends' within 60 ended
    wait "$join_pid" || status=$?
    expect "the next run ends with status 0, not $status" test $status -eq 0
    within 20 eval '[ "$(starts)" -gt '"$before"' ]'
    expect_whole_agent
    expect 'the Crash Detector is whole' cmp "$scratch/standins/TavoCrashDetector" "$support/TavoCrashDetector"
}

recovers() { # BUNDLE [URL]
    joins "$@"
    expect_tidy
    expect "nothing is left behind: $(leftovers)" test -z "$(leftovers)"
}
