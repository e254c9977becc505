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
# stay in the log. Many tests wait for sound or timers most of their time, so there are more of them
# at once than processors.
run_tests() {
    (cd "$root" && ctest --preset "$1" --parallel $((jobs + (jobs + 1) / 2)) --no-tests=error) 2>&1 |
        tee "$2" | grep -vE '^ +Start +[0-9]+:|[. ]Passed +[0-9.]+ sec$' || true
}

# test_preset PRESET: leaves its counts in passed, failed and skipped.
passed=0 failed=0 skipped=0
test_preset() {
    local preset=$1 log=$root/build/test-$1.log options=(-DSONOLET_BUILD_TESTS=ON)
    if [[ $preset == dev ]]; then
        install_axe
        options+=(-DSONOLET_BUILD_BROWSER=ON -DSONOLET_BUILD_WPE=ON)
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
    count_tests "$preset" "$log"
}

# count_tests NAME LOG: adds what CTest says at the end of LOG to passed, failed and skipped.
count_tests() {
    local name=$1 log=$2 bad all left_out
    if ! read -r bad all < <(sed -n \
        's/.*tests passed, \([0-9]*\) tests\{0,1\} failed out of \([0-9]*\).*/\1 \2/p' "$log"); then
        say "$name: the tests did not run to their end"
        failed=$((failed + 1))
        return
    fi
    left_out=$(grep -c '\*\*\*Skipped' "$log" || true)
    passed=$((passed + all - bad - left_out))
    failed=$((failed + bad))
    skipped=$((skipped + left_out))
}

# test_root: the same for the whole system on 32 bits, as "./sonolet test dev" in the root i386.
test_root() {
    local log=$root/build/i386-root$home_in_root/build/test-dev.log
    install_axe
    timed "i386: system" prepare_i386
    in_namespaces rm -f "$log"
    say "i386: building and testing in build/i386-root"
    timed "i386: build and tests" in_root i386 ./sonolet test dev || true
    if [[ -e $log ]]; then
        count_tests i386 "$log"
    else
        say "i386: not built"
        failed=$((failed + 1))
    fi
}
