#!/usr/bin/env bash
# Times the whole similar report, `brevant --similar balanced`, against the
# bare libvips thumbnail decode of the same files (vipsthumbnail, two
# processes) and against findimagedupes, on one corpus of 12-megapixel
# photos with other versions of some of them, and scores what each found.
#
#   bench/similar.sh [--photos N] [--runs R] [--corpus DIR] [--keep]
#
# The corpus (bench_similar_corpus make: N scenes, about 1.3 N pictures,
# 2.3 MB each) is made once under DIR and removed at the end unless --keep
# is given. Every run starts from an empty data folder, so nothing is
# measured from a cache. The caches of the files are warmed first; the
# tools then run in turn, R rounds, and each one's best round counts.
# Processor time (user + system) is printed beside wall time because it
# depends far less on what else the machine is doing.
set -euo pipefail
cd "$(dirname "$0")/.."

photos=1500
runs=3
corpus="${TMPDIR:-/tmp}/brevant-bench-similar"
keep=0
while [ $# -gt 0 ]; do
    case "$1" in
        --photos) photos="$2"; shift 2 ;;
        --runs) runs="$2"; shift 2 ;;
        --corpus) corpus="$2"; shift 2 ;;
        --keep) keep=1; shift ;;
        *) echo "usage: $0 [--photos N] [--runs R] [--corpus DIR] [--keep]" >&2; exit 2 ;;
    esac
done

missing=()
command -v vipsthumbnail >/dev/null || missing+=(libvips-tools)
command -v findimagedupes >/dev/null || missing+=(findimagedupes)
if [ ${#missing[@]} -gt 0 ]; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi

cmake --preset release >/dev/null
cmake --build --preset release --target brevant bench_similar_corpus >/dev/null
brevant="$PWD/build/release/brevant"
corpus_tool="$PWD/build/release/bench/bench_similar_corpus"

marker="$corpus.photos"
if [ ! -f "$marker" ] || [ "$(cat "$marker")" != "$photos" ]; then
    rm -rf "$corpus"
    "$corpus_tool" make "$corpus" --photos "$photos"
    echo "$photos" >"$marker"
fi
out=$(mktemp -d)
cleanup() {
    rm -rf "$out"
    [ "$keep" -eq 1 ] || rm -rf "$corpus" "$marker"
}
trap cleanup EXIT

run_tool() {
    case "$1" in
        brevant)
            rm -rf "$out/data" && mkdir "$out/data"
            BREVANT_DATA_DIR="$out/data" "$brevant" --similar balanced "$corpus" >"$out/brevant.txt"
            ;;
        vipsthumbnail)
            rm -rf "$out/thumbnails" && mkdir "$out/thumbnails"
            find "$corpus" -name '*.jpg' -print0 |
                xargs -0 -n 64 -P 2 vipsthumbnail -s 512 -o "$out/thumbnails/%s.v"
            ;;
        findimagedupes) findimagedupes -q -R "$corpus" >"$out/findimagedupes.txt" ;;
    esac
}

tools=(brevant vipsthumbnail findimagedupes)
declare -A wall cpu
echo "warming the cache"
find "$corpus" -type f -print0 | xargs -0 cat >/dev/null
for tool in "${tools[@]}"; do
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
        echo "round $round: $tool $real s wall, $used s processor (load $(cut -d' ' -f1 /proc/loadavg))"
    done
done

echo
"$corpus_tool" score "$corpus" brevant "$out/brevant.txt"
"$corpus_tool" score "$corpus" findimagedupes "$out/findimagedupes.txt"
# The report reads no faces; the window reads them for the groups' members.
"$corpus_tool" faces "$corpus" "$out/brevant.txt"
echo
echo "$(find "$corpus" -name '*.jpg' | wc -l) pictures, $(du -sh "$corpus" | cut -f1), warm cache, best of $runs"
printf "%-15s %9s %9s %18s %18s\n" tool "wall (s)" "cpu (s)" "wall / vipsthumbnail" "cpu / vipsthumbnail"
for tool in "${tools[@]}"; do
    ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
    printf "%-15s %9.2f %9.2f %18s %18s\n" "$tool" "${wall[$tool]}" "${cpu[$tool]}" \
        "$(ratio "${wall[$tool]}" "${wall[vipsthumbnail]}")" \
        "$(ratio "${cpu[$tool]}" "${cpu[vipsthumbnail]}")"
done
