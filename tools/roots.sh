# Debian systems for other processors in build/NAME-root, and what runs in them.
#
# Such a system is made once, by mmdebstrap, of the package sources that this machine has. Commands
# run in it natively, in namespaces of their own for mounts and processes: whatever they mount and
# start is gone when they end, and when this script ends before them.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

# What a command ends with that this machine cannot do.
readonly impossible=77
# Where the project stands in a root.
readonly home_in_root=/sonolet

# in_namespaces COMMAND...: runs it as root of namespaces, without input.
in_namespaces() {
    local namespaces=(--mount --pid --ipc --fork --kill-child) status=0
    if ((EUID != 0)); then
        namespaces+=(--user --map-auto --map-root-user)
    fi
    # In a process group of its own, so that Ctrl+C is for this script, whose end is the command's.
    set -m
    setpriv --pdeathsig KILL unshare "${namespaces[@]}" "$@" </dev/null &
    local job=$!
    set +m
    # shellcheck disable=SC2064 # the process of now
    trap "kill -KILL $job 2>/dev/null || true" EXIT
    wait "$job" || status=$?
    trap - EXIT
    return "$status"
}

# runs_32_bit: asks the kernel with the shortest program there is: exit(0).
runs_32_bit() {
    local program=$root/build/runs-32-bit status=0
    mkdir -p "$root/build"
    printf '%b' '\x7fELF\x1\x1\x1\0\0\0\0\0\0\0\0\0\x2\0\x3\0\x1\0\0\0\x54\x80\x4\x8\x34\0\0\0' \
        '\0\0\0\0\0\0\0\0\x34\0\x20\0\x1\0\0\0\0\0\0\0\x1\0\0\0\0\0\0\0\0\x80\x4\x8\0\x80\x4\x8' \
        '\x5d\0\0\0\x5d\0\0\0\x5\0\0\0\0\x10\0\0\xb8\x1\0\0\0\x31\xdb\xcd\x80' >"$program"
    chmod +x "$program"
    "$program" 2>/dev/null || status=1
    rm -f "$program"
    return "$status"
}

# needs_root: ends, with the reason, where the kernel allows no root.
needs_root() {
    local reason=""
    if ! command -v apt-get >/dev/null; then
        reason="this is not a Debian system"
    elif ! runs_32_bit; then
        reason="the kernel runs no 32-bit programs"
    else
        install_missing mmdebstrap
        ((EUID == 0)) || install_missing uidmap
        if ! in_namespaces sh -c 'mount -t proc proc /proc' 2>/dev/null; then
            reason="root may make no namespaces and mounts (a container needs CAP_SYS_ADMIN)"
            ((EUID == 0)) || reason="$(id -un) may make no user namespaces and mounts \
(it takes lines in /etc/subuid and /etc/subgid, and a kernel that allows it)"
        fi
    fi
    if [[ -n $reason ]]; then
        say "impossible here: $reason"
        exit "$impossible"
    fi
}

# package_sources ARCHITECTURE FOLDER: lines of a sources.list for it, made of those sources of this
# machine that have Debian packages for the architecture and can be read. Works in FOLDER.
package_sources() {
    local release state=$2
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    mkdir -p "$state/lists/partial" "$state/cache"
    local apt=(apt-get -q -o "APT::Architecture=$1" -o "APT::Architectures=$1"
        -o APT::Sandbox::User=root -o "Dir::State=$state" -o Dir::State::status=/dev/null
        -o "Dir::Cache=$state/cache")
    if ! "${apt[@]}" update >"$state/log" 2>&1; then
        grep '^E:' "$state/log" >&2 || true
        say "not every package source can be read for $1; going on with the others"
    fi
    # shellcheck disable=SC2016 # apt's variables
    "${apt[@]}" indextargets --format '$(ORIGIN)|$(RELEASE)|deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' | sed -n "s/^Debian|$release\(-updates\|-security\)\{0,1\}|//p"
}

# remove_root FOLDER
remove_root() {
    [[ -e $1 ]] || return 0
    in_namespaces rm -rf --one-file-system "$1"
}

# make_root NAME ARCHITECTURE VARIANT PACKAGE...: the system build/NAME-root with these packages;
# VARIANT is mmdebstrap's. One that is whole says so in a file, which is written last.
make_root() {
    local name=$1 architecture=$2 variant=$3 target=$root/build/$1-root
    shift 3
    local release wanted
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    wanted=$(printf '%s\n' "$release $variant" "$@" | sort -u)
    if [[ $(cat "$target/sonolet-root" 2>/dev/null) == "$wanted" ]]; then
        return
    fi
    say "$name: making a Debian $release in build/$name-root, once: some minutes"
    remove_root "$target"
    local work=$root/build/$name-root.apt log=$root/build/$name-root.log sources
    rm -rf "$work"
    mkdir -p "$work/keyrings"
    sources=$(package_sources "$architecture" "$work")
    [[ -n $sources ]] || fail "no package source of this machine has Debian $release for $architecture"
    # The keys and the ways to the sources are this machine's too.
    find /usr/share/keyrings /etc/apt/keyrings /etc/apt/trusted.gpg /etc/apt/trusted.gpg.d -type f \
        -exec cp -t "$work/keyrings" {} + 2>/dev/null || true
    apt-config dump | grep '^Acquire::' | grep -v '^Acquire::IndexTargets' >"$work/apt.conf"
    printf '%s\n' "$sources" >"$work/sources.list"
    local packages
    packages=$(printf '%s,' "$@")
    # mmdebstrap's own lines begin so; what apt and dpkg say stays in the log.
    if ! in_namespaces mmdebstrap --mode=root --architectures="$architecture" --variant="$variant" \
        --keyring="$work/keyrings" --aptopt="$work/apt.conf" \
        --aptopt='Dir::Etc::netrc "/etc/apt/auth.conf"' \
        --aptopt='Dir::Etc::netrcparts "/etc/apt/auth.conf.d"' \
        --aptopt='APT::Sandbox::User "root"' --dpkgopt=force-unsafe-io \
        --include="${packages%,}" "$release" "$target" "$work/sources.list" \
        2> >(tee "$log" | grep --line-buffered '^I: .*\.\.\.$' >&2); then
        tail -n 20 "$log" >&2
        fail "build/$name-root could not be made; all that was said is in $log"
    fi
    rm -rf "$work"
    # shellcheck disable=SC2016 # the inner shell's
    in_namespaces sh -c 'printf "%s\n" "$2" >"$1/sonolet-root"' sh "$target" "$wanted"
}

# The system i386, with the project's sources as they are now.
prepare_i386() {
    make_root i386 i386 apt "${whole_packages[@]}"
    copy_project i386
}

# copy_project NAME: the sources as they are now, into the root, and what npm installed for the tests;
# what was built there stays, and what an interrupted run left in its temporary files goes.
copy_project() {
    # shellcheck disable=SC2016 # the inner shell's
    in_namespaces sh -c 'rm -rf "$2"/tmp/* && mkdir -p "$2$3" && cd "$2$3" &&
        find . -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} + &&
        tar -C "$1" --exclude=./build --exclude=./install --exclude=./.git -c . |
        tar -x --no-same-owner &&
        if [ -d "$1/build/npm" ]; then
            mkdir -p build && rm -rf build/npm && cp -r "$1/build/npm" build
        fi' sh "$root" "$root/build/$1-root" "$home_in_root"
}

# in_root NAME COMMAND...: runs it in the project's copy in build/NAME-root.
in_root() {
    local folder=$root/build/$1-root launcher=()
    shift
    if [[ -n ${CMAKE_CXX_COMPILER_LAUNCHER:-} && -x $folder/usr/bin/${CMAKE_CXX_COMPILER_LAUNCHER##*/} ]]; then
        launcher=("CMAKE_C_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER##*/}"
            "CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER##*/}")
    fi
    # shellcheck disable=SC2016 # the inner shell's
    in_namespaces bash -c 'set -e
        mount --rbind /dev "$1/dev"
        mount -t tmpfs -o mode=1777 tmpfs "$1/dev/shm"
        mount -t proc proc "$1/proc"
        mount --rbind /sys "$1/sys"
        exec setarch i386 chroot "$1" env -i HOME=/root LANG=C.UTF-8 TERM="${TERM:-dumb}" \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            bash -c "cd \"\$0\" && exec \"\$@\"" "${@:2}"
        ' bash "$folder" "$home_in_root" env "${launcher[@]}" "$@"
}
