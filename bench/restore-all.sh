#!/usr/bin/env bash
# Times `brevant restore ID --all` for one cleanup of N pictures: the journal
# is read once and the Put Backs are written down in rounds, so the time
# grows with N, not with its square.
#
#   bench/restore-all.sh [--pictures N] [--build DIR]
set -euo pipefail

pictures=2000
build=build/release
while [ $# -gt 0 ]; do
    case "$1" in
    --pictures) pictures=$2; shift 2 ;;
    --build) build=$2; shift 2 ;;
    *) echo "usage: $0 [--pictures N] [--build DIR]" >&2; exit 2 ;;
    esac
done
brevant=$(realpath "$build/brevant")
sample_tool=$(realpath "$build/tools/make-sample-library")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$sample_tool" "$work/sample" >/dev/null
base="$work/sample/Holidays/IMG_1001.JPG"
mkdir -p "$work/photos/a" "$work/photos/b" "$work/xdg"
for ((i = 0; i < pictures; i++)); do
    { cat "$base"; printf 'picture %d' "$i"; } >"$work/photos/a/$i.jpg"
    cp -p "$work/photos/a/$i.jpg" "$work/photos/b/$i.jpg"
done
export BREVANT_DATA_DIR="$work/data" XDG_DATA_HOME="$work/xdg"

start=$(date +%s.%N)
"$brevant" clean --yes --protect "$work/photos/a" "$work/photos" >/dev/null
clean_seconds=$(awk -v s="$start" -v e="$(date +%s.%N)" 'BEGIN { printf "%.1f", e - s }')
id=$(basename "$(find "$work/data/Cleanups" -name 'cleanup-*.jsonl' | head -1)" .jsonl)
moved=$(find "$work/xdg/Trash/files" -type f | wc -l)

start=$(date +%s.%N)
"$brevant" restore "${id#cleanup-}" --all >/dev/null
restore_seconds=$(awk -v s="$start" -v e="$(date +%s.%N)" 'BEGIN { printf "%.2f", e - s }')
back=$(find "$work/photos/b" -type f | wc -l)
[ "$back" -eq "$pictures" ] || { echo "only $back of $pictures back" >&2; exit 1; }
echo "$moved pictures moved in $clean_seconds s; restore --all put them back in $restore_seconds s"
