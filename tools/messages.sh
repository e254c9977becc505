# What ./sonolet says, and how it gives up.
# shellcheck shell=bash disable=SC2034,SC2154 # variables of the other files

# All but a command's own output goes to standard error.
bold="" plain=""
if [[ -t 2 ]]; then
    bold=$'\033[1m' plain=$'\033[0m'
fi
say() { printf '%s==>%s %s\n' "$bold" "$plain" "$*" >&2; }
fail() {
    printf 'sonolet: %s\n' "$*" >&2
    exit 1
}
misuse() {
    printf 'sonolet: %s\n' "$*" >&2
    exit 2
}
# needs_value OPTION [VALUE]
needs_value() { [[ -n ${2:-} ]] || misuse "$1 takes a value (--help lists the options)"; }
