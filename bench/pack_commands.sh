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
timing=$(mktemp)
peakfile=$(mktemp)
trap 'rm -rf "$out" "$timing" "$peakfile"' EXIT

# median RUNS CMD...: median wall time in ms; the largest peak RSS (KiB) of the runs goes to $peakfile.
median() {
    local runs=$1
    shift
    local times=() start end
    local peak=0
    for ((i = 0; i < runs; i++)); do
        rm -f "$out"/*
        sync
        start=$(date +%s%N)
        /usr/bin/time -f %M -o "$timing" "$@" >/dev/null 2>&1
        end=$(date +%s%N)
        times+=($(((end - start) / 1000)))
        local rss
        rss=$(tail -n 1 "$timing")
        ((rss > peak)) && peak=$rss
    done
    echo "$peak" >"$peakfile"
    local middle
    middle=$(printf '%s\n' "${times[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p")
    awk -v us="$middle" 'BEGIN { printf "%.1f", us / 1000 }'
}
mib() { awk -v k="$1" 'BEGIN { printf "%.1f", k / 1024 }'; }

files=$(find "$tree" -type f | wc -l)
echo
echo "| Task ($files files) | ms | peak MiB |"
echo "|---|---|---|"
ms=$(median 5 "$cli" pack "$tree" --to "$out/many1.pod")
echo "| korvel-cli pack --format pod1 | $ms | $(mib "$(cat "$peakfile")") |"
ms=$(median 5 "$cli" pack "$tree" --to "$out/many2.pod" --format pod2)
echo "| korvel-cli pack --format pod2 | $ms | $(mib "$(cat "$peakfile")") |"
ms=$(median 5 tar -cf "$out/many.tar" -C "$tree" .)
echo "| tar -cf | $ms | $(mib "$(cat "$peakfile")") |"
