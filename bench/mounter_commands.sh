#!/usr/bin/env bash
# Whole-command timings of 'korvel-cli mounter show' on the generated game folders, beside
# find -maxdepth 2 -iname '*.pod' plus reading POD.INI on the same folders. Run by ./scripts/bench;
# KORVEL_BENCH_BUILD names the Release build and KORVEL_BENCH_CORPUS the corpus folder (default
# /tmp/korvel-bench). Prints a Markdown table of medians in milliseconds and korvel-cli's peak memory.
set -euo pipefail
build=${KORVEL_BENCH_BUILD:?KORVEL_BENCH_BUILD must name the build folder}
corpus=${KORVEL_BENCH_CORPUS:-/tmp/korvel-bench}
cli=$build/app/korvel-cli
"$build/bench/mounter_bench" --corpus "$corpus"
bench_cpu=1
source "$(dirname "$0")/lib/timing.sh"

echo
echo "| Size | Archives | POD.INI entries | korvel-cli mounter show ms | find + cat POD.INI ms | ratio | korvel-cli CPU ms | find + cat CPU ms | CPU ratio | peak MiB |"
echo "|---|---|---|---|---|---|---|---|---|---|"
for scale in 1 4 16; do
    base=$corpus/mounter/x$scale
    runs=${KORVEL_BENCH_RUNS:-7}
    [ "$scale" = 16 ] && runs=$(((runs + 1) / 2))
    show_ms=$(median "$runs" "$cli" mounter --game "$base/GAME" --extra-dirs "$base/EXTRA1|$base/EXTRA2" show)
    show_peak=$(peak_mib)
    show_cpu=$(cat "$cpufile")
    find_ms=$(median "$runs" sh -c "find '$base/GAME' '$base/EXTRA1' '$base/EXTRA2' -maxdepth 2 -iname '*.pod'; cat '$base/GAME/POD.INI'")
    find_cpu=$(cat "$cpufile")
    ratio=$(ratio "$show_ms" "$find_ms")
    cpu_ratio=$(ratio "$show_cpu" "$find_cpu")
    echo "| ${scale}x | $((5000 * scale + 200 * scale)) | $((2000 * scale)) | $show_ms | $find_ms | $ratio | $show_cpu | $find_cpu | $cpu_ratio | $show_peak |"
done
