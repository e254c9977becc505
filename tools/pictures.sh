# Pictures of the player.
# shellcheck shell=bash disable=SC2154 # variables of the other files

command_pictures() {
    local folder=$root/build/pictures accept=()
    case ${1:-} in
    --help | -h)
        cat <<'TEXT'
usage: ./sonolet pictures [--accept | --docs]

Takes a picture of every view of the player at five sizes, light and dark, into build/pictures,
and says which differ from what was accepted last. With --accept they are what later ones, and the
tests, are compared with (tests/browser/accepted). With --docs those of README and docs are made
anew (docs/images).
TEXT
        return
        ;;
    "") ;;
    --accept) accept=(SONOLET_ACCEPT=1) ;;
    --docs)
        "$root/docs/images/make"
        return
        ;;
    *) misuse "pictures: unknown option $1" ;;
    esac
    install_missing "${whole_packages[@]}"
    configure dev -DSONOLET_BUILD_TESTS=ON -DSONOLET_BUILD_BROWSER=ON || exit 1
    bring_up_to_date browser_test
    mkdir -p "$folder"
    env "${accept[@]}" SONOLET_SCREENSHOTS="$folder" "$build/bin/browser_test" \
        --gtest_filter='Views.LookAsTheyWereAccepted' >"$folder/log.txt" || {
        grep -E '^[a-z]+-[0-9]+x[0-9]+-(light|dark)$' "$folder/log.txt" >&2 || true
        fail "not as accepted ($folder/log.txt)"
    }
    echo "$folder"
}
