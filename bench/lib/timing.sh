# Timing helpers shared by the whole-command benchmarks (bench/*.sh source this file).
#
# quick RUNS CMD...    for commands of a few milliseconds, where one timing of one run is mostly the
#                      shell's own noise: a warm-up run (its peak RSS goes to $peakfile), then RUNS
#                      batches of back-to-back runs (as many as fill about 200 ms, 1 to 100); prints the
#                      median over the batches of the mean wall time per run, in ms.
# median RUNS CMD...   runs CMD (output discarded) RUNS times and prints the median wall time in ms.
#                      Before each run it calls `before_run` when the script defines one (to empty an
#                      output folder, say). The largest peak RSS of the runs (KiB) is left in the file
#                      $peakfile, read back with peak_mib. With bench_cpu=1 each run is repeated under
#                      bash's `times` and the median processor time (user + system, ms) is left in
#                      $cpufile: on a busy machine processor time is the steadier figure. The results go
#                      through files because callers run median in a $(...) subshell.
timing=$(mktemp)
peakfile=$(mktemp)
cpufile=$(mktemp)
bench_cpu=${bench_cpu:-0}
trap 'rm -f "$timing" "$peakfile" "$cpufile"' EXIT

median_of() {
    local count=$1
    shift
    printf '%s\n' "$@" | sort -n | sed -n "$(((count + 1) / 2))p"
}

median() {
    local runs=$1
    shift
    local times=() cpus=() start end rss peak=0
    for ((i = 0; i < runs; i++)); do
        if declare -F before_run >/dev/null; then before_run; fi
        start=$(date +%s%N)
        /usr/bin/time -f %M -o "$timing" "$@" >/dev/null 2>&1
        end=$(date +%s%N)
        times+=($(((end - start) / 1000)))
        rss=$(tail -n 1 "$timing")
        ((rss > peak)) && peak=$rss
        if [ "$bench_cpu" = 1 ]; then
            if declare -F before_run >/dev/null; then before_run; fi
            # bash's own 'times' gives the children's user and system time to the millisecond.
            cpus+=($(bash -c '"$@" >/dev/null 2>&1; times' _ "$@" | tail -n 1 |
                awk '{ split($1, u, /[ms]/); split($2, s, /[ms]/); printf "%d", (u[1] * 60 + u[2] + s[1] * 60 + s[2]) * 1000 }'))
        fi
    done
    echo "$peak" >"$peakfile"
    [ "$bench_cpu" = 1 ] && median_of "$runs" "${cpus[@]}" >"$cpufile"
    awk -v us="$(median_of "$runs" "${times[@]}")" 'BEGIN { printf "%.1f", us / 1000 }'
}

quick() {
    local runs=$1
    shift
    local start end per batch means=()
    start=$(date +%s%N)
    /usr/bin/time -f %M -o "$timing" "$@" >/dev/null 2>&1
    end=$(date +%s%N)
    tail -n 1 "$timing" >"$peakfile"
    per=$(((end - start) / 1000))
    batch=$((200000 / (per > 0 ? per : 1)))
    ((batch < 1)) && batch=1
    ((batch > 100)) && batch=100
    for ((i = 0; i < runs; i++)); do
        start=$(date +%s%N)
        for ((j = 0; j < batch; j++)); do "$@" >/dev/null 2>&1; done
        end=$(date +%s%N)
        means+=($(((end - start) / 1000 / batch)))
    done
    awk -v us="$(median_of "$runs" "${means[@]}")" 'BEGIN { printf "%.2f", us / 1000 }'
}

mib() { awk -v k="$1" 'BEGIN { printf "%.1f", k / 1024 }'; }
peak_mib() { mib "$(cat "$peakfile")"; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }'; }
