# Debian systems for other processors or of another release in build/NAME-root, and what runs in them.
#
# Such a system is made once, by mmdebstrap, of the package sources that this machine has. Commands
# run in it natively, in namespaces of their own for mounts and processes: whatever they mount and
# start is gone when they end, and when this script ends before them. One command at a time has it.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

# What a command ends with that this machine cannot do.
readonly impossible=77
# Where the project stands in a root.
readonly home_in_root=/sonolet
# What a root has: its release of Debian and its architecture; this machine's where none is said.
declare -A root_release=([trixie]=trixie [i386-trixie]=trixie)
declare -A root_architecture=([i386]=i386 [i386-trixie]=i386 [armhf]=armhf)

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

# why_no_root NAME: leaves in reason why this machine allows no such root; nothing when it does.
reason=""
why_no_root() {
    reason=""
    if ! command -v apt-get >/dev/null; then
        reason="this is not a Debian system"
    elif [[ ${root_architecture[$1]:-} == i386 ]] && ! runs_32_bit; then
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
}

# needs_root NAME: ends, with the reason, where this machine allows no such root.
needs_root() {
    why_no_root "$1"
    if [[ -n $reason ]]; then
        say "$1: impossible here: $reason"
        exit "$impossible"
    fi
}

# lock_root NAME: waits until no other command has it; this one has it until it ends.
declare -A root_locks=()
lock_root() {
    local file=$root/build/$1-root.lock lock
    [[ -z ${root_locks[$1]:-} ]] || return 0
    mkdir -p "$root/build"
    exec {lock}>>"$file"
    if ! flock --nonblock "$lock"; then
        say "$1: another command works in build/$1-root (process $(cat "$file")); waiting for its end"
        flock "$lock"
    fi
    echo $$ >"$file"
    root_locks[$1]=$lock
}

# readable_sources ARCHITECTURE RELEASE FOLDER [apt's option...]: lines of a sources.list for it, made of
# those sources that have Debian packages for the architecture and can be read. Works in FOLDER.
readable_sources() {
    local architecture=$1 release=$2 state=$3
    shift 3
    mkdir -p "$state/lists/partial" "$state/cache"
    local apt=(apt-get -q -o "APT::Architecture=$architecture" -o "APT::Architectures=$architecture"
        -o APT::Sandbox::User=root -o "Dir::State=$state" -o Dir::State::status=/dev/null
        -o "Dir::Cache=$state/cache" "$@")
    if ! "${apt[@]}" update >"$state/log" 2>&1; then
        grep '^E:' "$state/log" >&2 || true
        say "not every package source can be read for $release, $architecture; going on with the others"
    fi
    # shellcheck disable=SC2016 # apt's variables
    "${apt[@]}" indextargets --format '$(ORIGIN)|$(RELEASE)|deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' | sed -n "s/^Debian|$release\(-updates\|-security\)\{0,1\}|//p"
}

# package_sources ARCHITECTURE RELEASE FOLDER: the same of the sources of this machine; another release
# is looked for where they have this machine's. FOLDER has keyrings.
package_sources() {
    local architecture=$1 release=$2 folder=$3
    if [[ $release == "$own_release" ]]; then
        readable_sources "$architecture" "$release" "$folder/own"
        return
    fi
    readable_sources "$(dpkg --print-architecture)" "$own_release" "$folder/own" |
        sed "s/ $own_release/ $release/" >"$folder/other.list"
    readable_sources "$architecture" "$release" "$folder/other" \
        -o "Dir::Etc::sourcelist=$folder/other.list" -o Dir::Etc::sourceparts=/dev/null \
        -o "Dir::Etc::trustedparts=$folder/keyrings"
}

# remove_root FOLDER
remove_root() {
    [[ -e $1 ]] || return 0
    in_namespaces rm -rf --one-file-system "$1"
}

# make_root NAME VARIANT PACKAGE...: the system build/NAME-root with these packages; VARIANT is
# mmdebstrap's. One that is whole says in a file, which is written last, what it was made of; it is
# made again when something is wanted that it has not.
make_root() {
    local name=$1 variant=$2 target=$root/build/$1-root
    local release=${root_release[$1]:-$own_release}
    local architecture=${root_architecture[$1]:-$(dpkg --print-architecture)}
    shift 2
    local wanted
    wanted=$(printf '%s\n' "$release $variant" "$@" | sort -u)
    if [[ -e $target/sonolet-root ]] && ! grep -qvxFf "$target/sonolet-root" <<<"$wanted"; then
        return
    fi
    say "$name: making a Debian $release in build/$name-root, once: some minutes"
    remove_root "$target"
    local work=$root/build/$name-root.apt log=$root/build/$name-root.log sources
    rm -rf "$work"
    mkdir -p "$work/keyrings"
    # The keys and the ways to the sources are this machine's too.
    find /usr/share/keyrings /etc/apt/keyrings /etc/apt/trusted.gpg /etc/apt/trusted.gpg.d -type f \
        -exec cp -t "$work/keyrings" {} + 2>/dev/null || true
    sources=$(package_sources "$architecture" "$release" "$work")
    if [[ -z $sources ]]; then
        say "$name: impossible here: no package source of this machine has Debian $release for $architecture"
        exit "$impossible"
    fi
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
    [[ $variant != extract ]] || finish_extracted "$target"
    # shellcheck disable=SC2016 # the inner shell's
    in_namespaces sh -c 'printf "%s\n" "$2" >"$1/sonolet-root"' sh "$target" "$wanted"
}

# finish_extracted FOLDER: what the packages' scripts, none of which has run, would have done: the
# libraries that Debian lets choose among. Links stay in the folder; an emulator follows them from here.
finish_extracted() {
    # shellcheck disable=SC2016 # the inner shell's
    in_namespaces bash -c 'cd "$1"
        for library in usr/lib/*/{blas/libblas,lapack/liblapack}.so.3; do
            [[ ! -e $library ]] || ln -srf "$library" "${library%/*/*}"
        done
        find . -type l -lname "/*" -print0 | while IFS= read -r -d "" link; do
            ln -srfT ".$(readlink "$link")" "$link"
        done' bash "$1"
}

# What host and service are built and run with, for another processor.
make_sysroot() {
    local packages=("libstdc++-$(arm-linux-gnueabihf-g++ -dumpversion)-dev" libc6-dev) package
    for package in "${build_packages[@]}"; do
        case $package in
        g++ | cmake | ninja-build | pkg-config) ;; # this machine's
        *) packages+=("$package") ;;
        esac
    done
    make_root armhf extract "${packages[@]}"
}

# prepare_root NAME: a system that the project can be built and tested in, with its sources as they
# are now.
prepare_root() {
    local packages=("${whole_packages[@]}")
    if [[ ${root_release[$1]:-$own_release} != bookworm ]]; then
        mapfile -t packages < <(printf '%s\n' "${packages[@]}" |
            grep -vxF "$(printf '%s\n' "${wpe_of_bookworm[@]}")")
    fi
    make_root "$1" apt "${packages[@]}"
    copy_project "$1"
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
    local folder=$root/build/$1-root launcher=() machine
    machine=${root_architecture[$1]:-$(uname -m)}
    shift
    if [[ -n ${CMAKE_CXX_COMPILER_LAUNCHER:-} && -x $folder/usr/bin/${CMAKE_CXX_COMPILER_LAUNCHER##*/} ]]; then
        launcher=("CMAKE_C_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER##*/}"
            "CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER##*/}")
    fi
    # shellcheck disable=SC2016 # the inner shell's
    in_namespaces bash -c 'set -e
        mount --bind "$1" "$1" # else no namespaces could be made inside
        mount --rbind /dev "$1/dev"
        mount -t tmpfs -o mode=1777 tmpfs "$1/dev/shm"
        mount -t proc proc "$1/proc"
        mount --rbind /sys "$1/sys"
        exec setarch "$2" chroot "$1" env -i HOME=/root LANG=C.UTF-8 TERM="${TERM:-dumb}" \
            PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
            bash -c "cd \"\$0\" && exec \"\$@\"" "${@:3}"
        ' bash "$folder" "$machine" "$home_in_root" env "${launcher[@]}" "$@"
}
