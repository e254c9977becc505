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
# stay in the log. Many tests wait for sound or timers most of their time, so there are three times
# as many at once as processors. Where a few have failed, they alone are run again, one after the
# other, into LOG.again: what passes then is told, and does not hold up a change that has no part in
# it.
run_tests() {
    local log=$2 few=3 bad all
    run_ctest "$1" "$log" --parallel $((jobs * 3))
    rm -f "$log.again"
    if read -r bad all < <(counts_in "$log") && ((bad > 0 && bad <= few && bad < all)); then
        run_ctest "$1" "$log.again" --rerun-failed
    fi
}

run_ctest() {
    (cd "$root" && ctest --preset "$1" "${@:3}" --no-tests=error) 2>&1 | tee "$2" |
        grep -vE '^ +Start +[0-9]+:|[. ]Passed +[0-9.]+ sec$' || true
}

# counts_in LOG: how many failed, of how many; nothing when they did not run to their end.
counts_in() {
    sed -n 's/.*tests passed, \([0-9]*\) tests\{0,1\} failed out of \([0-9]*\).*/\1 \2/p' "$1"
}

passed=0 failed=0 skipped=0

# test_presets PRESET...: leaves their counts in passed, failed and skipped. One is tested while the
# next is built: tests wait for sound or timers most of their time.
test_presets() {
    local preset testing=""
    for preset in "$@"; do
        say "$preset: building"
        if build_tests "$preset"; then
            end_tests "$testing"
            begin_tests "$preset"
            testing=$preset
        else
            say "$preset: not built"
            failed=$((failed + 1))
        fi
    done
    end_tests "$testing"
}

build_tests() {
    local options=(-DSONOLET_BUILD_TESTS=ON)
    if [[ $1 == dev || $1 == unity ]]; then
        install_axe
        options+=(-DSONOLET_BUILD_BROWSER=ON "-DSONOLET_BUILD_WPE=$build_wpe")
    fi
    configure "$1" "${options[@]}" && timed "$1: build" build_in "$root/build/$1"
}

# begin_tests PRESET: in the background; end_tests tells what they had to say.
begin_tests() {
    local log=$root/build/test-$1.log
    say "$1: testing"
    {
        times=()
        timed "$1: tests" run_tests "$1" "$log" >"$log.told"
        tell_times 2>"$log.times"
    } &
}

end_tests() {
    local log=$root/build/test-$1.log
    [[ -n $1 ]] || return 0
    wait
    say "$1: tested"
    cat "$log.told"
    times+=("$(cat "$log.times")")
    rm "$log.told" "$log.times"
    count_tests "$1" "$log"
}

# count_tests NAME LOG: adds what CTest says at the end of LOG to passed, failed and skipped.
count_tests() {
    local name=$1 log=$2 bad all left_out still
    if ! read -r bad all < <(counts_in "$log"); then
        say "$name: the tests did not run to their end"
        failed=$((failed + 1))
        return
    fi
    left_out=$(grep -c '\*\*\*Skipped' "$log" || true)
    if [[ -e $log.again ]] && read -r still _ < <(counts_in "$log.again") && ((still < bad)); then
        say "$name: $((bad - still)) of $bad that failed beside others passed alone"
        bad=$still
    fi
    passed=$((passed + all - bad - left_out))
    failed=$((failed + bad))
    skipped=$((skipped + left_out))
}

# test_root NAME: the same for the whole system in a root, as "./sonolet test dev" there.
test_root() {
    local name=$1 log=$root/build/$1-root$home_in_root/build/test-dev.log
    install_axe
    lock_root "$name"
    timed "$name: system" prepare_root "$name"
    in_namespaces rm -f "$log"
    say "$name: building and testing in build/$name-root"
    timed "$name: build and tests" in_root "$name" ./sonolet test dev || true
    if [[ -e $log ]]; then
        count_tests "$name" "$log"
    else
        say "$name: not built"
        failed=$((failed + 1))
    fi
}

# test_armhf: the whole system cross-built over a Debian of that processor, none of whose programs
# runs; without the rights to make one, the plug-in and its unit tests.
test_armhf() {
    why_no_root armhf
    if [[ -n $reason ]]; then
        say "armhf: the plug-in alone, for the whole system is impossible here: $reason"
        test_presets armhf
        return
    fi
    lock_root armhf
    timed "armhf: system" make_sysroot
    test_presets armhf-whole
    timed "armhf: samples" same_samples armhf "$root/build/armhf-whole/bin/sonolet-host"
}

# same_samples NAME HOST: another build's host plays the demo library into a file that is the same,
# bit for bit, as what this machine's host plays; one test more.
same_samples() {
    local folder=$root/build/samples name=$1 page=$root/tests/pages/scripts/samples.js host
    prepare
    rm -rf "$folder"
    mkdir -p "$folder"
    "$build/bin/sonolet-demo" "$build/demo" >&2
    for host in "$build/bin/sonolet-host" "$2"; do
        SONOLET_STATE=$folder/state "$host" "$page" --music "$build/demo" --speed 10 --for 1000 \
            --audio "wav:$folder/$(basename "$(dirname "$(dirname "$host")")").wav" || true
        rm -rf "$folder/state"
    done
    local files=("$folder"/*.wav)
    if ((${#files[@]} == 2)) && cmp "${files[@]}"; then
        say "$name: $(stat -c %s "${files[0]}") bytes of sound are those of this machine"
        passed=$((passed + 1))
    else
        say "$name: the sound is not that of this machine; both are in $folder"
        failed=$((failed + 1))
    fi
}
