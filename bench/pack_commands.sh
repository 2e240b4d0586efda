#!/usr/bin/env bash
# Packing the 100,000-file folder of the `many` corpus (written by archive_bench --corpus) with
# korvel-cli pack, as POD1 and as POD2, beside GNU tar -cf of the same folder. Run by ./scripts/bench;
# KORVEL_BENCH_BUILD names the Release build and KORVEL_BENCH_CORPUS the corpus folder (default
# /tmp/korvel-bench). Prints a Markdown table of medians in milliseconds and the peak memory.
set -euo pipefail
build=${KORVEL_BENCH_BUILD:?KORVEL_BENCH_BUILD must name the build folder}
corpus=${KORVEL_BENCH_CORPUS:-/tmp/korvel-bench}
cli=$build/app/korvel-cli
tree=$corpus/tree/many
[ -d "$tree" ] || "$build/bench/archive_bench" --corpus "$corpus"

out=$(mktemp -d)
source "$(dirname "$0")/lib/timing.sh"
trap 'rm -rf "$out" "$timing" "$peakfile" "$cpufile"' EXIT
before_run() {
    rm -f "$out"/*
    sync
}

files=$(find "$tree" -type f | wc -l)
echo
echo "| Task ($files files) | ms | peak MiB |"
echo "|---|---|---|"
ms=$(median 5 "$cli" pack "$tree" --to "$out/many1.pod")
echo "| korvel-cli pack --format pod1 | $ms | $(peak_mib) |"
ms=$(median 5 "$cli" pack "$tree" --to "$out/many2.pod" --format pod2)
echo "| korvel-cli pack --format pod2 | $ms | $(peak_mib) |"
ms=$(median 5 tar -cf "$out/many.tar" -C "$tree" .)
echo "| tar -cf | $ms | $(peak_mib) |"
