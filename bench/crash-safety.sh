#!/usr/bin/env bash
# Kills `brevant clean --yes` with SIGKILL at random moments and checks, after
# each kill, that no picture was lost: every file is in its place or in the
# Trash, every pair keeps a copy in place, `brevant history` reconciles the
# interrupted journal, and `brevant restore --all` brings every picture back
# byte for byte.
#
#   bench/crash-safety.sh [--runs N] [--pairs P] [--window S] [--build DIR]
#
# Each kill comes 0.05 s to S seconds after the start (S about the length of
# a whole run, so that kills land in the scan and in the moves).
set -euo pipefail

runs=20
pairs=300
window=4
build=build/release
while [ $# -gt 0 ]; do
    case "$1" in
    --runs) runs=$2; shift 2 ;;
    --pairs) pairs=$2; shift 2 ;;
    --window) window=$2; shift 2 ;;
    --build) build=$2; shift 2 ;;
    *) echo "usage: $0 [--runs N] [--pairs P] [--window S] [--build DIR]" >&2; exit 2 ;;
    esac
done
brevant=$(realpath "$build/brevant")
sample_tool=$(realpath "$build/tools/make-sample-library")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$sample_tool" "$work/sample" >/dev/null
base="$work/sample/Holidays/IMG_1001.JPG"

# P pairs of identical pictures, each pair's bytes its own (padding after
# the end-of-image marker).
make_library() {
    local library=$1
    mkdir -p "$library/a" "$library/b"
    for ((i = 0; i < pairs; i++)); do
        { cat "$base"; printf 'pair %d' "$i"; } >"$library/a/$i.jpg"
        cp -p "$library/a/$i.jpg" "$library/b/$i.jpg"
    done
}

fail() {
    echo "run $1: $2" >&2
    exit 1
}

killed_mid_run=0
for ((run = 1; run <= runs; run++)); do
    dir="$work/run$run"
    mkdir -p "$dir/xdg"
    make_library "$dir/photos"
    (cd "$dir/photos" && find . -type f -exec sha256sum {} + | sort) >"$dir/before.txt"
    export BREVANT_DATA_DIR="$dir/data" XDG_DATA_HOME="$dir/xdg"

    "$brevant" clean --yes "$dir/photos" >/dev/null 2>&1 &
    pid=$!
    sleep "$(awk -v seed="$run" -v window="$window" \
        'BEGIN { srand(seed); printf "%.3f", 0.05 + rand() * window }')"
    kill -9 "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true

    # Nothing lost: each pair has a copy in place, and every file is in its
    # place or in the Trash.
    in_place=$(find "$dir/photos" -type f | wc -l)
    in_trash=$({ find "$dir/xdg/Trash/files" -type f 2>/dev/null || true; } | wc -l)
    [ $((in_place + in_trash)) -eq $((2 * pairs)) ] ||
        fail "$run" "$in_place in place + $in_trash in the Trash != $((2 * pairs))"
    for ((i = 0; i < pairs; i++)); do
        [ -e "$dir/photos/a/$i.jpg" ] || [ -e "$dir/photos/b/$i.jpg" ] ||
            fail "$run" "pair $i has no copy left in place"
    done

    journal=$({ find "$dir/data/Cleanups" -name 'cleanup-*.jsonl' 2>/dev/null || true; } | head -1)
    if [ -z "$journal" ]; then
        echo "run $run: killed before the journal was made; $in_trash moved"
        [ "$in_trash" -eq 0 ] || fail "$run" "pictures moved without a journal"
        continue
    fi
    if ! grep -q '"kind":"finished"' "$journal"; then
        killed_mid_run=$((killed_mid_run + 1))
    fi
    "$brevant" history >"$dir/history.txt" || fail "$run" "history failed"
    if ! grep -q '"kind":"finished"' "$journal"; then
        # Killed while the plan itself was being written: nothing can have
        # moved, since no move starts before its intent is on disk.
        [ "$in_trash" -eq 0 ] || fail "$run" "history did not reconcile"
        echo "run $run: killed while the journal was being made; nothing moved"
        continue
    fi
    id=$(basename "$journal" .jsonl)
    id=${id#cleanup-}
    moved=$(grep -c '"movedToTrash"' "$journal" || true)
    "$brevant" restore "$id" --all >/dev/null || [ "$in_trash" -eq 0 ] ||
        fail "$run" "restore failed"
    (cd "$dir/photos" && find . -type f -exec sha256sum {} + | sort) >"$dir/after.txt"
    cmp -s "$dir/before.txt" "$dir/after.txt" || fail "$run" "pictures differ after Put Back"
    left=$({ find "$dir/xdg/Trash/files" -type f 2>/dev/null || true; } | wc -l)
    [ "$left" -eq 0 ] || fail "$run" "$left files left in the Trash"
    echo "run $run: $in_trash of $pairs moved when killed, journal $(grep -q 'interrupted' "$dir/history.txt" && echo interrupted || echo finished), $moved outcome lines; all back"
    rm -rf "$dir"
done
echo "$runs runs, $killed_mid_run killed in the middle of a cleanup: no picture lost, every one put back"
