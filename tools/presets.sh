# Building and testing presets.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

# timed PART COMMAND...: runs it, and remembers how long it took.
times=()
timed() {
    local part=$1 start=$SECONDS status=0
    shift
    "$@" || status=$?
    local took=$((SECONDS - start))
    times+=("$(printf '%4d:%02d  %s' $((took / 60)) $((took % 60)) "$part")")
    return "$status"
}

# Writes what timed remembers.
tell_times() {
    ((${#times[@]} == 0)) || printf '%s\n' "${times[@]}" >&2
}

# run_tests PRESET LOG: failures are counted from what CTest prints; its lines about tests that pass
# stay in the log.
run_tests() {
    (cd "$root" && ctest --preset "$1" --parallel "$jobs" --no-tests=error) 2>&1 |
        tee "$2" | grep -vE '^ +Start +[0-9]+:|[. ]Passed +[0-9.]+ sec$' || true
}

# test_preset PRESET: leaves its counts in passed, failed and skipped.
passed=0 failed=0 skipped=0
test_preset() {
    local preset=$1 log=$root/build/test-$1.log options=(-DSONOLET_BUILD_TESTS=ON)
    if [[ $preset == dev ]]; then
        options+=(-DSONOLET_BUILD_BROWSER=ON)
    fi
    say "$preset: building"
    if ! configure "$preset" "${options[@]}" ||
        ! timed "$preset: build" build_in "$root/build/$preset"; then
        say "$preset: not built"
        failed=$((failed + 1))
        return
    fi
    say "$preset: testing"
    timed "$preset: tests" run_tests "$preset" "$log"
    local bad all
    if ! read -r bad all < <(sed -n \
        's/.*tests passed, \([0-9]*\) tests\{0,1\} failed out of \([0-9]*\).*/\1 \2/p' "$log"); then
        say "$preset: the tests did not run to their end"
        failed=$((failed + 1))
        return
    fi
    local left_out
    left_out=$(grep -c '\*\*\*Skipped' "$log" || true)
    passed=$((passed + all - bad - left_out))
    failed=$((failed + bad))
    skipped=$((skipped + left_out))
}
