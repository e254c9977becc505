# clang-format and clang-tidy over the sources.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

# In a build folder of their own, where everything is on and nothing is compiled.
lint_build=$root/build/lint

# Whoever the files belong to.
git_here() { git -c safe.directory='*' -C "$root" "$@"; }

# The sources that git knows, one a line, from the root.
all_sources() {
    git_here ls-files '*.cpp' '*.h'
}

# changed_since BASE: those that differ from it, as they are in the working tree, new ones that git
# does not know yet among them. An empty BASE is where this branch left main or, on main itself, the
# commit before.
changed_since() {
    local base=$1 name
    if [[ -z $base ]]; then
        for name in origin/main main; do
            [[ -n $base ]] || base=$(git_here merge-base HEAD "$name" 2>/dev/null || true)
        done
        if [[ -z $base || $base == $(git_here rev-parse HEAD) ]]; then
            base=$(git_here rev-parse --verify --quiet HEAD~1 || true)
        fi
    fi
    if [[ -z $base ]]; then
        say "there is no commit to compare with here"
        return
    fi
    git_here diff --name-only --diff-filter=d "$base" -- '*.cpp' '*.h'
    git_here ls-files --others --exclude-standard -- '*.cpp' '*.h'
}

# compiled_of SOURCE...: what clang-tidy looks at for these: of a header, a source that includes it.
compiled_of() {
    local source
    for source in "$@"; do
        if [[ $source == *.cpp ]]; then
            echo "$source"
        elif [[ -e $root/${source%.h}.cpp ]]; then
            echo "${source%.h}.cpp"
        else
            including "$source"
        fi
    done | sort -u
}

# including HEADER: a source that includes it, itself or by way of other headers. Headers of one name
# stand in several folders, so the nearest that name it come first. Nothing when nobody does.
seen=()
including() {
    local header=$1 kind near found
    [[ " ${seen[*]} " != *" $header "* ]] || return 0
    local seen=("${seen[@]}" "$header")
    for near in "${header%/*}/" "${header%%/*}/" ""; do
        for kind in cpp h; do
            while read -r found; do
                if [[ $kind == h ]]; then
                    found=$(compiled_of "$found")
                fi
                if [[ -n $found ]]; then
                    echo "$found"
                    return
                fi
            done < <(git_here grep -lE "#include \"([^\"]*/)?${header##*/}\"" -- "$near*.$kind")
        done
    done
}

# lint_sources SOURCE...: writes what is wrong, and fails.
lint_sources() {
    local sources=("$@") compiled status=0
    say "clang-format: ${#sources[@]} files"
    (cd "$root" && clang-format-14 --dry-run -Werror "${sources[@]}") || status=1
    configure dev -B "$lint_build" -DSONOLET_BUILD_TESTS=ON -DSONOLET_BUILD_BROWSER=ON \
        "-DSONOLET_BUILD_WPE=$build_wpe" -DSONOLET_BUILD_BENCH=ON -DSONOLET_FUZZ=ON \
        -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON || return 1
    mapfile -t compiled < <(compiled_of "${sources[@]}")
    say "clang-tidy: ${#compiled[@]} sources"
    (cd "$root" && printf '%s\0' "${compiled[@]}" |
        xargs -0 -r -P "$jobs" -n 1 clang-tidy-14 -p "$lint_build" --quiet \
            --header-filter="^$root/(Src|host|layer|service|tests|bench)/" >&2 2>/dev/null) || status=1
    return "$status"
}
