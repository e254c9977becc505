# Benchmarks.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

bench_help() {
    cat <<'TEXT'
usage: ./sonolet bench [--json | --markdown] [GROUP...]

Builds the release preset and what measures it, and prints one table: each figure, what it is
measured against in the same run or its limit, the ratio, the goal, and whether it holds.

  script   calls, reads, events and wrappers in the host's script engine
  browser  the same over what browsers show of their engine, beside the runner
  load     loading the plug-in
  plugin   the plug-in by itself, without a script engine
  sound    the ring of sound, and a second of playing
  base64   Base64 both ways
  layer    a call that is recorded
  memory   a wrapper's memory, the heap at rest (also on i686, in an emulator)
  size     the plug-in for i686
  growth   ten, a thousand, a hundred thousand of everything
  search   search among 100,000 tracks, scans of 10,000 files (half a gigabyte in TMPDIR)
  server   a music server of 100,000 tracks, and one that hangs
  playing  the gap between tracks; two minutes beside as many busy processes as there are cores
  player   searches and scrolling in the player, among 6,000 and 100,000 tracks
  device   playing on 32 bits with 192 MiB and a quarter of a core, in build/i386-root

Without a group, all of them but device: some minutes.
TEXT
}

command_bench() {
    if [[ ${1:-} == --help || ${1:-} == -h ]]; then
        bench_help
        return
    fi
    local argument groups
    mapfile -t groups < <(bench_help | sed -n 's/^  \([a-z0-9]*\)  .*/\1/p')
    for argument in "$@"; do
        [[ " --json --markdown ${groups[*]} " == *" $argument "* ]] ||
            misuse "no benchmark $argument (${groups[*]})"
    done
    if [[ " $* " == *" device "* ]]; then
        bench_device "$@"
        return
    fi
    local needed=("${build_packages[@]}" "${bench_packages[@]}")
    read -ra needed <<<"${needed[*]} ${preset_packages[i686]}"
    install_missing "${needed[@]}" "${browser_packages[@]}" xvfb
    configure release -DSONOLET_BUILD_BENCH=ON -DSONOLET_BUILD_BROWSER=ON -DSONOLET_BUILD_TESTS=OFF || exit 1
    say "building"
    build_in "$root/build/release" sonolet-bench-all || fail "the build failed"
    local device=()
    if command -v i686-linux-gnu-g++ >/dev/null && command -v qemu-i386 >/dev/null; then
        configure i686 -DSONOLET_BUILD_BENCH=ON -DSONOLET_BUILD_TESTS=OFF || exit 1
        build_in "$root/build/i686" sonolet-bench-memory sonolet-bench-stripped ||
            fail "the build failed"
        device=(--device "$root/build/i686")
    fi
    "$root/build/release/bin/sonolet-bench" "${device[@]}" "$@"
}

# make_groups: control groups with what a small device has, 192 MiB and a quarter of a core. Leaves
# their folders in groups; fails where the kernel or the user's rights forbid it.
groups=()
make_groups() {
    local base=/sys/fs/cgroup name=sonolet-$$ group
    if [[ -e $base/cgroup.controllers ]]; then
        group=$base/$name
        mkdir "$group" 2>/dev/null || return 1
        groups=("$group")
        { echo 192M >"$group/memory.max" && echo "25000 100000" >"$group/cpu.max"; } 2>/dev/null
    else
        for group in "$base/memory/$name" "$base/cpu/$name"; do
            mkdir "$group" 2>/dev/null || return 1
            groups+=("$group")
        done
        { echo 192M >"${groups[0]}/memory.limit_in_bytes" &&
            echo 100000 >"${groups[1]}/cpu.cfs_period_us" &&
            echo 25000 >"${groups[1]}/cpu.cfs_quota_us"; } 2>/dev/null
    fi
}

remove_groups() {
    ((${#groups[@]} == 0)) || rmdir "${groups[@]}" 2>/dev/null || true
    groups=()
}

# bench_device ARGUMENT...: those of command_bench.
bench_device() {
    local argument status=0
    for argument in "$@"; do
        [[ " --json --markdown device " == *" $argument "* ]] ||
            misuse "the benchmark device takes no other beside it"
    done
    needs_root i386
    lock_root i386
    prepare_root i386
    say "i386: building"
    in_root i386 sh -c "cmake --preset release -DSONOLET_BUILD_BENCH=device \
        -DSONOLET_BUILD_TESTS=OFF >/dev/null && cmake --build build/release \
        --parallel $jobs --target sonolet-bench sonolet-bench-device" >&2 || fail "the build failed"
    if ! make_groups; then
        remove_groups
        say "no control groups here: 192 MiB by a resource limit, and a whole core"
    fi
    in_root i386 env SONOLET_BENCH_GROUPS="${groups[*]}" \
        build/release/bin/sonolet-bench "$@" || status=$?
    remove_groups
    return "$status"
}
