#!/usr/bin/env bash
# Builds the Debian packages, unpacks them into an empty root and uses them from there.
#   install_test.sh BUILD_DIR WORK_DIR
set -euo pipefail

build=$1 work=$2
root=$work/root
checks=0
fail() {
    printf 'FAILED: %s\n' "$*" >&2
    exit 1
}
# check WHAT COMMAND...: shows what the command says when it fails.
check() {
    local what=$1 output
    shift
    output=$("$@" 2>&1) || fail "$what"$'\n'"$output"
    checks=$((checks + 1))
}

rm -rf "$work"
mkdir -p "$root" "$work/home"
check "the packages are built" cpack --config "$build/CPackConfig.cmake" -B "$work" \
    -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip
packages=(sonolet-plugin sonolet-host libspotify12-local)
if grep -qs '^SONOLET_BUILD_WPE:BOOL=ON' "$build/CMakeCache.txt"; then
    packages+=(sonolet-wpe)
fi
for package in "${packages[@]}"; do
    files=("$work/${package}"_*.deb)
    check "$package is there" test -f "${files[0]}"
    check "$package unpacks" dpkg-deb -x "${files[0]}" "$root"
    check "$package has its licence" test -s "$root/usr/share/doc/$package/copyright"
    depends=$(dpkg-deb -f "${files[0]}" Depends)
    case $package in
    sonolet-plugin) check "$package needs no more than the C++ library: $depends" \
        grep -vqE 'gstreamer|gtk|sqlite' <<<"$depends" ;;
    sonolet-wpe) for needed in sonolet-plugin cog libwpewebkit; do
        check "$package brings $needed: $depends" grep -q "\b$needed" <<<"$depends"
    done ;;
    sonolet-host) check "$package brings engine and plug-in: $depends" \
        grep -qE 'libjavascriptcoregtk.*sonolet-plugin|sonolet-plugin.*libjavascriptcoregtk' <<<"$depends" ;;
    esac
done

check "lintian has nothing to say" lintian --allow-root --fail-on error,warning "$work"/*.deb

# Nothing of the build folder or the user's environment is needed.
clean=(env -i "HOME=$work/home" "PATH=$root/usr/bin:/usr/bin:/bin" LANG=C.UTF-8
    "SONOLET_MUSIC=$work/music" "SONOLET_STATE=$work/state")
elf=0
while read -r file; do
    elf=$((elf + 1))
    paths=$(readelf -d "$file" | grep -E 'R(UN)?PATH' || true)
    [[ $paths != *"$build"* ]] || fail "$file looks for libraries in the build folder: $paths"
done < <(find "$root" -type f \( -path '*/bin/*' -o -name '*.so*' \))
check "programs and libraries were looked at" test "$elf" -ge 8

check "sonolet-demo" "${clean[@]}" sonolet-demo "$work/music"
check "an account" bash -c "echo secret | \"\$@\"" - "${clean[@]}" sonolet-user add ann
check "a playlist" "${clean[@]}" sonolet-playlist new Evening
tracks=$("${clean[@]}" sonolet-index | wc -l)
check "all tracks are found, $tracks" test "$tracks" -eq 12
check "a page plays a track" timeout 120 "${clean[@]}" sonolet-host --speed 8 --for 200 \
    --audio "wav:$work/out.wav" "$root/usr/share/sonolet/pages/hello.js"
check "its sound is longer than five seconds" \
    test "$(stat -c %s "$work/out.wav" 2>/dev/null || echo 0)" -gt $((5 * 44100 * 4))
if [[ -e $root/usr/bin/sonolet-browser ]]; then
    check "the browser starts" "${clean[@]}" sonolet-browser --help
    # Nothing but a display is missing.
    shown=$("${clean[@]}" sonolet-browser 2>&1 || true)
    check "without a page it opens the player: $shown" grep -q "no display" <<<"$shown"
    check "the desktop finds it" grep -qx "Exec=sonolet-browser" \
        "$root/usr/share/applications/sonolet-player.desktop"
    check "its icon is there" test -s "$root/usr/share/icons/hicolor/scalable/apps/sonolet-player.svg"
    check "its part in the web process finds its libraries" \
        bash -c '! ldd "$1" | grep "not found"' - "$root/usr/lib/sonolet/lib/browser/sonolet-web.so"
fi

if [[ -e $root/usr/bin/sonolet-cog ]]; then
    check "what Cog loads finds its libraries" \
        bash -c '! ldd "$1" | grep "not found"' - "$root/usr/lib/sonolet/lib/wpe/sonolet-web.so"
fi

# What --help lists, the manual has.
for program in "$root"/usr/bin/*; do
    name=$(basename "$program")
    check "the version of $name" grep -qx "$name 1.0" <<<"$("${clean[@]}" "$name" --version)"
    check "the usage of $name" grep -q "^usage: $name " <<<"$("${clean[@]}" "$name" --help)"
    manual=$(man -l "$root/usr/share/man/man1/$name.1"* | col -b) || fail "$name has no manual"
    for option in $("${clean[@]}" "$name" --help | grep -oE -- '--[a-z-]+' | sort -u); do
        check "the manual of $name has $option" grep -qF -- "$option" <<<"$manual"
    done
done

# Where an integrator's build finds the plug-in and its declarations.
export PKG_CONFIG_PATH=$root/usr/share/pkgconfig
for variable in plugin types; do
    check "pkg-config knows the $variable" \
        test -f "$(pkg-config --variable="$variable" sonolet)"
done
cat >"$work/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.16)
project(Device NONE)
find_package(Sonolet 1.0 REQUIRED)
if(NOT EXISTS "${SONOLET_PLUGIN}" OR NOT EXISTS "${SONOLET_TYPES}")
    message(FATAL_ERROR "not there: ${SONOLET_PLUGIN}, ${SONOLET_TYPES}")
endif()
CMAKE
check "CMake finds the package" \
    cmake -S "$work" -B "$work/device" -DCMAKE_PREFIX_PATH="$root/usr"
echo "$checks checks passed"
