#!/usr/bin/env bash
# The figures for a million pictures on one machine, in one run: the
# similarity index at 100,000, 300,000 and 1,000,000 synthetic pictures,
# what the shared-byte rule misses, the exact scan against jdupes, the whole
# similar report against the bare libvips decode, a scan of a million
# small files, and the review window over a million pictures' groups.
#
#   bench/scale.sh [--dir DIR] [--runs R]
#
# Corpora are made once under DIR (default $TMPDIR/brevant-bench) and kept,
# so a second run measures without making them again; they take about
# 10 GB. Every figure printed is also written to DIR/scale.log.
set -euo pipefail
cd "$(dirname "$0")/.."

dir="${TMPDIR:-/tmp}/brevant-bench"
runs=3
while [ $# -gt 0 ]; do
    case "$1" in
        --dir) dir="$2"; shift 2 ;;
        --runs) runs="$2"; shift 2 ;;
        *) echo "usage: $0 [--dir DIR] [--runs R]" >&2; exit 2 ;;
    esac
done
mkdir -p "$dir"
exec > >(tee "$dir/scale.log") 2>&1

cmake --preset release >/dev/null
cmake --build --preset release --target brevant bench_index bench_misses bench_exact_corpus \
    bench_similar_corpus bench_review_open >/dev/null
bin="$PWD/build/release"
load() { cut -d' ' -f1-3 /proc/loadavg; }

echo "== $(date -u '+%Y-%m-%d %H:%M UTC'), $(nproc) cores, load $(load)"
echo
echo "== similarity index, measuring excluded"
for count in 100000 300000 1000000; do
    for kind in uniform clustered; do
        "$bin/bench/bench_index" --pictures "$count" --kind "$kind"
    done
done
echo
echo "== what the shared-byte rule misses"
"$bin/bench/bench_misses" --pictures 100000 --kind clustered
"$bin/bench/bench_misses" --corpus "$dir/similar" --cache "$dir/similar-features.plist" ||
    echo "(the similar corpus is made below; run again for its figures)"
echo
echo "== exact scan against jdupes, fdupes and rmlint (load $(load))"
bench/exact.sh --runs "$((runs + 2))" --corpus "$dir/exact" --keep
echo
echo "== the whole similar report against the bare libvips decode (load $(load))"
bench/similar.sh --runs "$runs" --corpus "$dir/similar" --keep
echo
echo "== a scan of a million small files (load $(load))"
if [ ! -d "$dir/million" ]; then
    "$bin/bench/bench_exact_corpus" small "$dir/million" --files 1000000
fi
find "$dir/million" -type f -print0 | xargs -0 cat >/dev/null
"$bin/bench/bench_exact_corpus" stages "$dir/million"
/usr/bin/time -f "brevant scan: %e s wall, %U s user, %S s system, peak memory %M KB" \
    "$bin/brevant" scan "$dir/million" >/dev/null
echo
echo "== the review window over 333,334 groups of a million pictures (load $(load))"
QT_QPA_PLATFORM=offscreen "$bin/bench/bench_review_open" --groups 333334 --steps 300 2>&1 |
    grep -v propagateSizeHints
echo
echo "== done, load $(load)"
