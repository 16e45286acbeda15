#!/usr/bin/env bash
# Kills `brevant clean --yes` and `brevant restore --all` with SIGKILL at
# random moments and checks, after each kill, that no picture was lost and
# none is hidden: every file is in its place or in the Trash, every pair
# keeps a copy in place, `brevant history` settles the journal, no Trash
# record is left without its picture, every picture in the Trash is one the
# journal lists there, and `brevant restore --all` then brings every picture
# back byte for byte.
#
#   bench/crash-safety.sh [--runs N] [--restore-runs M] [--pairs P]
#                         [--window S] [--build DIR]
#
# A cleanup kill comes 0.05 s to S seconds after the start (S about the
# length of a whole run, so kills land in the scan and in the moves); a
# restore kill comes within the measured length of a whole Put Back.
set -euo pipefail

runs=20
restore_runs=10
pairs=300
window=4
build=build/release
while [ $# -gt 0 ]; do
    case "$1" in
    --runs) runs=$2; shift 2 ;;
    --restore-runs) restore_runs=$2; shift 2 ;;
    --pairs) pairs=$2; shift 2 ;;
    --window) window=$2; shift 2 ;;
    --build) build=$2; shift 2 ;;
    *) echo "usage: $0 [--runs N] [--restore-runs M] [--pairs P] [--window S] [--build DIR]" >&2
       exit 2 ;;
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

random_delay() { # seed, from, to
    awk -v seed="$1" -v from="$2" -v to="$3" 'BEGIN { srand(seed); printf "%.3f", from + rand() * (to - from) }'
}

count_files() {
    { find "$1" -type f 2>/dev/null || true; } | wc -l
}

# Trash records without their picture, and pictures in the Trash that no
# journal of the data folder lists there now.
orphans_and_unlisted() {
    local dir=$1
    "$brevant" history --json >/dev/null
    local reports=$dir/reports
    mkdir -p "$reports"
    for journal in "$dir"/data/Cleanups/cleanup-*.jsonl; do
        [ -e "$journal" ] || continue
        local id
        id=$(basename "$journal" .jsonl)
        "$brevant" history "${id#cleanup-}" --json >"$reports/$id.json"
    done
    python3 - "$dir/xdg/Trash" "$reports" <<'PY'
import json, os, sys
trash = sys.argv[1]
listed = set()
for name in os.listdir(sys.argv[2]):
    with open(os.path.join(sys.argv[2], name)) as document:
        for item in json.load(document)["cleanup"]["items"]:
            moved = item["outcome"].get("movedToTrash")
            if moved is not None and "trashPath" in moved:
                listed.add(moved["trashPath"])
files = os.path.join(trash, "files")
info = os.path.join(trash, "info")
names = os.listdir(files) if os.path.isdir(files) else []
records = os.listdir(info) if os.path.isdir(info) else []
orphans = [r for r in records if not os.path.lexists(os.path.join(files, r[:-len(".trashinfo")]))]
unlisted = [n for n in names if os.path.join(files, n) not in listed]
print(len(orphans), len(unlisted))
PY
}

check_nothing_lost() { # run, dir
    local in_place in_trash
    in_place=$(count_files "$2/photos")
    in_trash=$(count_files "$2/xdg/Trash/files")
    [ $((in_place + in_trash)) -eq $((2 * pairs)) ] ||
        fail "$1" "$in_place in place + $in_trash in the Trash != $((2 * pairs))"
    for ((i = 0; i < pairs; i++)); do
        [ -e "$2/photos/a/$i.jpg" ] || [ -e "$2/photos/b/$i.jpg" ] ||
            fail "$1" "pair $i has no copy left in place"
    done
}

# After a kill: settle, count orphans and unlisted pictures, put all back.
settle_and_put_back() { # run, dir
    local run=$1 dir=$2
    check_nothing_lost "$run" "$dir"
    "$brevant" history >"$dir/history.txt" || fail "$run" "history failed"
    read -r orphans unlisted < <(orphans_and_unlisted "$dir")
    total_orphans=$((total_orphans + orphans))
    total_unlisted=$((total_unlisted + unlisted))
    [ "$orphans" -eq 0 ] || fail "$run" "$orphans Trash records without their picture"
    [ "$unlisted" -eq 0 ] || fail "$run" "$unlisted pictures in the Trash that Brevant does not list"
    for journal in "$dir"/data/Cleanups/cleanup-*.jsonl; do
        [ -e "$journal" ] || continue
        local id
        id=$(basename "$journal" .jsonl)
        "$brevant" restore "${id#cleanup-}" --all >/dev/null ||
            [ "$(count_files "$dir/xdg/Trash/files")" -eq 0 ] || fail "$run" "restore failed"
    done
    (cd "$dir/photos" && find . -type f -exec sha256sum {} + | sort) >"$dir/after.txt"
    cmp -s "$dir/before.txt" "$dir/after.txt" || fail "$run" "pictures differ after Put Back"
    [ "$(count_files "$dir/xdg/Trash/files")" -eq 0 ] || fail "$run" "files left in the Trash"
    [ "$(count_files "$dir/xdg/Trash/info")" -eq 0 ] || fail "$run" "records left in the Trash"
}

prepare() { # dir
    mkdir -p "$1/xdg"
    make_library "$1/photos"
    (cd "$1/photos" && find . -type f -exec sha256sum {} + | sort) >"$1/before.txt"
    export BREVANT_DATA_DIR="$1/data" XDG_DATA_HOME="$1/xdg"
}

total_orphans=0
total_unlisted=0
killed_cleanups=0
for ((run = 1; run <= runs; run++)); do
    dir="$work/clean$run"
    prepare "$dir"
    "$brevant" clean --yes "$dir/photos" >/dev/null 2>&1 &
    pid=$!
    sleep "$(random_delay "$run" 0.05 "$window")"
    kill -9 "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
    moved=$(count_files "$dir/xdg/Trash/files")
    journal=$({ find "$dir/data/Cleanups" -name 'cleanup-*.jsonl' 2>/dev/null || true; } | head -1)
    if [ -n "$journal" ] && ! grep -q '"kind":"finished"' "$journal"; then
        killed_cleanups=$((killed_cleanups + 1))
    fi
    settle_and_put_back "clean $run" "$dir"
    echo "clean run $run: killed with $moved of $pairs moved; settled, all back"
    rm -rf "$dir"
done

# A whole Put Back of one cleanup, timed, gives the window for the kills.
dir="$work/timing"
prepare "$dir"
"$brevant" clean --yes "$dir/photos" >/dev/null 2>&1
id=$(basename "$(find "$dir/data/Cleanups" -name 'cleanup-*.jsonl' | head -1)" .jsonl)
start=$(date +%s.%N)
"$brevant" restore "${id#cleanup-}" --all >/dev/null
restore_seconds=$(awk -v s="$start" -v e="$(date +%s.%N)" 'BEGIN { printf "%.2f", e - s }')
rm -rf "$dir"

killed_restores=0
for ((run = 1; run <= restore_runs; run++)); do
    dir="$work/restore$run"
    prepare "$dir"
    "$brevant" clean --yes "$dir/photos" >/dev/null 2>&1
    id=$(basename "$(find "$dir/data/Cleanups" -name 'cleanup-*.jsonl' | head -1)" .jsonl)
    "$brevant" restore "${id#cleanup-}" --all >/dev/null 2>&1 &
    pid=$!
    sleep "$(random_delay "$((run + 1000))" 0.01 "$restore_seconds")"
    kill -9 "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null && finished=1 || finished=0
    back=$(( $(count_files "$dir/photos") - pairs ))
    [ "$finished" -eq 1 ] || killed_restores=$((killed_restores + 1))
    settle_and_put_back "restore $run" "$dir"
    echo "restore run $run: killed with $back of $pairs back; settled, all back"
    rm -rf "$dir"
done
echo "$runs cleanup runs ($killed_cleanups killed mid-run) and $restore_runs Put Backs" \
    "($killed_restores killed mid-run; a whole one took $restore_seconds s):" \
    "0 pictures lost, $total_orphans Trash records without a picture," \
    "$total_unlisted pictures in the Trash unlisted; every one put back"
