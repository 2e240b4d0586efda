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
timing=$(mktemp)
peakfile=$(mktemp)
cpufile=$(mktemp)
trap 'rm -f "$timing" "$peakfile" "$cpufile"' EXIT

# median RUNS CMD...: median wall time in ms of RUNS runs; leaves the largest peak RSS (KiB) in
# $peakfile and the median processor time (user + system, ms) in $cpufile (the function runs in a
# subshell, so a variable would not come back). On a busy machine the processor time is the steadier.
median() {
    local runs=$1
    shift
    local times=() cpus=() start end rss
    peak=0
    for ((i = 0; i < runs; i++)); do
        start=$(date +%s%N)
        /usr/bin/time -f %M -o "$timing" "$@" >/dev/null 2>&1
        end=$(date +%s%N)
        times+=($(((end - start) / 1000)))
        rss=$(tail -n 1 "$timing")
        ((rss > peak)) && peak=$rss
        # bash's own 'times' gives the children's user and system time to the millisecond.
        cpus+=($(bash -c '"$@" >/dev/null 2>&1; times' _ "$@" | tail -n 1 |
            awk '{ split($1, u, /[ms]/); split($2, s, /[ms]/); printf "%d", (u[1] * 60 + u[2] + s[1] * 60 + s[2]) * 1000 }'))
    done
    echo "$peak" >"$peakfile"
    printf '%s\n' "${cpus[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p" >"$cpufile"
    local middle
    middle=$(printf '%s\n' "${times[@]}" | sort -n | sed -n "$(((runs + 1) / 2))p")
    awk -v us="$middle" 'BEGIN { printf "%.1f", us / 1000 }'
}

mib() { awk -v k="$1" 'BEGIN { printf "%.1f", k / 1024 }'; }

echo
echo "| Size | Archives | POD.INI entries | korvel-cli mounter show ms | find + cat POD.INI ms | ratio | korvel-cli CPU ms | find + cat CPU ms | CPU ratio | peak MiB |"
echo "|---|---|---|---|---|---|---|---|---|---|"
for scale in 1 4 16; do
    base=$corpus/mounter/x$scale
    runs=${KORVEL_BENCH_RUNS:-7}
    [ "$scale" = 16 ] && runs=$(((runs + 1) / 2))
    show_ms=$(median "$runs" "$cli" mounter --game "$base/GAME" --extra-dirs "$base/EXTRA1|$base/EXTRA2" show)
    show_peak=$(cat "$peakfile")
    show_cpu=$(cat "$cpufile")
    find_ms=$(median "$runs" sh -c "find '$base/GAME' '$base/EXTRA1' '$base/EXTRA2' -maxdepth 2 -iname '*.pod'; cat '$base/GAME/POD.INI'")
    find_cpu=$(cat "$cpufile")
    ratio=$(awk -v a="$show_ms" -v b="$find_ms" 'BEGIN { printf "%.2f", a / b }')
    cpu_ratio=$(awk -v a="$show_cpu" -v b="$find_cpu" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }')
    echo "| ${scale}x | $((5000 * scale + 200 * scale)) | $((2000 * scale)) | $show_ms | $find_ms | $ratio | $show_cpu | $find_cpu | $cpu_ratio | $(mib "$show_peak") |"
done
