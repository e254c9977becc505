# The Debian packages that commands need, and how they are installed.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

build_packages=(
    g++ cmake ninja-build pkg-config
    libjavascriptcoregtk-4.1-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav
    libtag1-dev libgdk-pixbuf-2.0-dev libsqlite3-dev libcrypt-dev nlohmann-json3-dev
    libsoup-3.0-dev libjson-glib-dev glib-networking
)
browser_packages=(libwebkit2gtk-4.1-dev fonts-inter fonts-noto-core fonts-droid-fallback)
# Debian 13 has another WPE WebKit, which host/engine knows nothing of.
wpe_of_bookworm=(libwpewebkit-1.1-dev cog)
wpe_packages=() build_wpe=OFF
own_release=$(. /etc/os-release 2>/dev/null && echo "${VERSION_CODENAME:-}")
if [[ $own_release == bookworm ]]; then
    wpe_packages=("${wpe_of_bookworm[@]}") build_wpe=ON
fi
package_packages=(dpkg-dev file lintian)
test_packages=(
    libgtest-dev libgmock-dev binutils node-typescript man-db supysonic gunicorn openssl
)
browser_test_packages=(
    webkit2gtk-driver wpewebkit-driver xvfb pulseaudio pulseaudio-utils gstreamer1.0-pulseaudio
    curl procps python3 xdotool
)
# What all of dev needs.
whole_packages=(
    "${build_packages[@]}" "${test_packages[@]}"
    "${browser_packages[@]}" "${browser_test_packages[@]}" "${wpe_packages[@]}"
    "${package_packages[@]}"
)
bench_packages=(
    libbenchmark-dev libboost-dev libjack-jackd2-dev libssl-dev
    pulseaudio pulseaudio-utils gstreamer1.0-pulseaudio
)
fuzz_packages=(clang libclang-rt-dev)
lint_packages=(clang-format-14 clang-tidy-14 git)
declare -A preset_packages=(
    [i686]="g++-i686-linux-gnu qemu-user"
    [armhf]="g++-arm-linux-gnueabihf qemu-user"
    [armv5]="clang-19 binutils-arm-linux-gnueabi libstdc++-12-dev-armel-cross"
    [mips32]="clang-19 binutils-mipsel-linux-gnu libstdc++-12-dev-mipsel-cross"
)

missing_packages() {
    local package
    for package in "$@"; do
        if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            printf '%s\n' "$package"
        fi
    done
}

install_missing() {
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        if [[ ! -e $build/build.ninja ]]; then
            say "not a Debian system: install what corresponds to these packages yourself: $*"
        fi
        return
    fi
    local missing
    mapfile -t missing < <(missing_packages "$@")
    if ((${#missing[@]} == 0)); then
        return
    fi
    say "installing ${missing[*]}"
    local as_root=()
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            fail "no sudo here; as root: apt-get install ${missing[*]}"
        fi
        as_root=(sudo)
    fi
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y)
    "${apt[@]}" update >&2 || say "apt-get update failed; going on with the lists that are there"
    "${apt[@]}" install --no-install-recommends "${missing[@]}" >&2 ||
        fail "apt-get could not install ${missing[*]}"
}

# What the browser tests look for faults of accessibility with, in build/npm.
axe=axe-core@4.10.3
install_axe() {
    local folder=$root/build/npm
    if grep -qs "\"version\": \"${axe#*@}\"" "$folder/node_modules/axe-core/package.json"; then
        return
    fi
    if ! command -v npm >/dev/null; then
        say "no npm here: the player's accessibility is not checked"
        return
    fi
    say "installing $axe"
    mkdir -p "$folder"
    npm install --prefix "$folder" --no-save --no-audit --no-fund "$axe" >&2 ||
        fail "npm could not install $axe"
}
