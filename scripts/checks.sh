# Checks that report one line each. Sourced after common.sh, not run.
failed=0 # 1 once a check has failed

# check WHAT COMMAND...: reports whether the command succeeds, with its output if it does not.
check() {
    local what=$1 said
    shift
    if said=$("$@" 2>&1); then
        say "  ok      $what"
    else
        say "  FAILED  $what"
        [ -z "$said" ] || sed 's/^/            /' <<<"$said"
        failed=1
    fi
}
