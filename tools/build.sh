# Configuring and building.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

build=$root/build/dev
jobs=$(nproc)
run_targets=(Sonolet Sonolet-layer kellog spotify12 sonolet-host sonolet-fault sonolet-user sonolet-index
    sonolet-playlist sonolet-trace sonolet-replay sonolet-demo)
browser_targets=(sonolet-browser)

# configure PRESET [cmake option...]: quiet when it works.
configure() {
    local preset=$1 output
    shift
    if ! output=$(cd "$root" && cmake --preset "$preset" "$@" 2>&1); then
        printf '%s\n' "$output" >&2
        say "$preset: cannot be configured"
        return 1
    fi
}

# build_in FOLDER [target...]
build_in() {
    local folder=$1 targets=()
    shift
    if (($# > 0)); then
        targets=(--target "$@")
    fi
    cmake --build "$folder" --parallel "$jobs" "${targets[@]}" >&2
}

# What run needs stands in build/dev. Says nothing when it did already.
prepare() {
    install_missing "${build_packages[@]}"
    if [[ ! -e $build/build.ninja ]]; then
        say "configuring"
        # The test libraries may not be here; "test" turns this on.
        configure dev -DSONOLET_BUILD_TESTS=OFF || exit 1
    fi
    bring_up_to_date "${run_targets[@]}"
}

# The same for browse.
prepare_browser() {
    install_missing "${build_packages[@]}" "${browser_packages[@]}"
    if ! grep -qs '^SONOLET_BUILD_BROWSER:BOOL=ON' "$build/CMakeCache.txt"; then
        say "configuring"
        local tests=()
        if [[ ! -e $build/build.ninja ]]; then
            tests=(-DSONOLET_BUILD_TESTS=OFF)
        fi
        configure dev -DSONOLET_BUILD_BROWSER=ON "${tests[@]}" || exit 1
    fi
    bring_up_to_date "${run_targets[@]}" "${browser_targets[@]}"
}

# bring_up_to_date TARGET...
bring_up_to_date() {
    local plan
    plan=$(ninja -C "$build" -n "$@" 2>&1 | tail -n 1 || true)
    if [[ $plan != *"no work to do"* ]]; then
        say "building (the first time takes two to six minutes)"
        build_in "$build" "$@" || fail "the build failed"
    fi
}
