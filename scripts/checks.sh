# Checks that report themselves in a line each: sourced after common.sh, not run.
failed=0 # 1 from the first check on that does not hold

# check WHAT COMMAND...: says whether the command succeeds, and what it says when it does not.
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
