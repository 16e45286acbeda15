#!/usr/bin/env bash
# Times `brevant scan` against rmlint, jdupes and fdupes on one corpus of
# photo-sized JPEG files, checks that every tool found the same groups of
# identical pictures (hard links folded), and prints the wall-time ratios.
#
#   bench/exact.sh [--files N] [--runs R] [--corpus DIR] [--keep]
#
# The peers are Debian packages; the script installs those missing. The
# corpus (about 2 MB a file) is made once under DIR and removed at the end
# unless --keep is given; the caches are warmed by reading it once, then the
# tools run in turn, R rounds, and each tool's best time counts. Wall time is
# the goal; processor time (user + system) is printed beside it because it
# does not depend on what else the machine is doing.
set -euo pipefail
cd "$(dirname "$0")/.."

files=2200
runs=5
corpus="${TMPDIR:-/tmp}/brevant-bench-exact"
keep=0
while [ $# -gt 0 ]; do
    case "$1" in
        --files) files="$2"; shift 2 ;;
        --runs) runs="$2"; shift 2 ;;
        --corpus) corpus="$2"; shift 2 ;;
        --keep) keep=1; shift ;;
        *) echo "usage: $0 [--files N] [--runs R] [--corpus DIR] [--keep]" >&2; exit 2 ;;
    esac
done

missing=()
for tool in rmlint jdupes fdupes; do
    command -v "$tool" >/dev/null || missing+=("$tool")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi

cmake --preset release >/dev/null
cmake --build --preset release --target brevant bench_exact_corpus >/dev/null
brevant="$PWD/build/release/brevant"
corpus_tool="$PWD/build/release/bench/bench_exact_corpus"

# A corpus made by an earlier run with --keep is used again when it has the
# size asked for.
marker="$corpus.files"
if [ ! -f "$marker" ] || [ "$(cat "$marker")" != "$files" ]; then
    rm -rf "$corpus"
    "$corpus_tool" make "$corpus" --files "$files"
    echo "$files" >"$marker"
fi
out=$(mktemp -d)
cleanup() {
    rm -rf "$out"
    [ "$keep" -eq 1 ] || rm -rf "$corpus" "$marker"
}
trap cleanup EXIT

run_tool() {
    case "$1" in
        brevant) "$brevant" scan --json "$corpus" >"$out/brevant.json" ;;
        jdupes) jdupes -r -q "$corpus" >"$out/jdupes.txt" ;;
        fdupes) fdupes -r -q "$corpus" >"$out/fdupes.txt" ;;
        # rmlint writes its own script and JSON beside it unless told
        # otherwise; only its fdupes-style list is kept.
        rmlint) (cd "$out" && rmlint -T df -o fdupes:"$out/rmlint.txt" "$corpus" >/dev/null) ;;
    esac
}

tools=(brevant jdupes fdupes rmlint)
declare -A wall cpu
echo "warming the cache"
find "$corpus" -type f -print0 | xargs -0 cat >/dev/null
for tool in "${tools[@]}"; do
    run_tool "$tool"
    wall[$tool]=999999
    cpu[$tool]=999999
done
exec 3>&2
TIMEFORMAT='%R %U %S'
for round in $(seq "$runs"); do
    for tool in "${tools[@]}"; do
        read -r real user system < <({ time run_tool "$tool" 2>&3; } 2>&1)
        used=$(awk -v u="$user" -v s="$system" 'BEGIN { printf "%.3f", u + s }')
        wall[$tool]=$(awk -v a="${wall[$tool]}" -v b="$real" 'BEGIN { print (b < a) ? b : a }')
        cpu[$tool]=$(awk -v a="${cpu[$tool]}" -v b="$used" 'BEGIN { print (b < a) ? b : a }')
        echo "round $round: $tool $real s wall, $used s processor"
    done
done

echo
agreed=0
"$corpus_tool" agree "$out/brevant.json" jdupes="$out/jdupes.txt" fdupes="$out/fdupes.txt" \
    rmlint="$out/rmlint.txt" || agreed=$?

echo
echo "$(find "$corpus" -type f | wc -l) files, $(du -sh "$corpus" | cut -f1), warm cache, best of $runs"
printf "%-8s %9s %11s %14s %14s\n" tool "wall (s)" "cpu (s)" "wall ratio" "cpu ratio"
for tool in "${tools[@]}"; do
    ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
    printf "%-8s %9.3f %11.3f %14s %14s\n" "$tool" "${wall[$tool]}" "${cpu[$tool]}" \
        "$(ratio "${wall[brevant]}" "${wall[$tool]}")" "$(ratio "${cpu[brevant]}" "${cpu[$tool]}")"
done
echo "(ratios are brevant's time over the tool's: below 1 means brevant is faster)"
exit "$agreed"
