#!/usr/bin/env bash
# Whole-command timings of korvel-cli on the archive corpora, beside cp -r, cat/head, bsdtar and unzip
# on the same files. Run by ./scripts/bench; KORVEL_BENCH_BUILD names the Release build and
# KORVEL_BENCH_CORPUS the corpus folder (default /tmp/korvel-bench). Prints a Markdown table of
# medians in milliseconds and korvel-cli's peak memory.
set -euo pipefail
build=${KORVEL_BENCH_BUILD:?KORVEL_BENCH_BUILD must name the build folder}
corpus=${KORVEL_BENCH_CORPUS:-/tmp/korvel-bench}
cli=$build/app/korvel-cli
"$build/bench/archive_bench" --corpus "$corpus"

# Equivalent tar and zip (stored, uncompressed) of each corpus's files, made once.
for name in many big typical; do
    [ -s "$corpus/$name.tar" ] || bsdtar -cf "$corpus/$name.tar" -C "$corpus/tree/$name" .
    [ -s "$corpus/$name.zip" ] || (cd "$corpus/tree/$name" && zip -0 -q -r "$corpus/$name.zip" .)
done

out=$corpus/out
timing=$(mktemp)
peakfile=$(mktemp)
trap 'rm -rf "$out" "$timing" "$peakfile"' EXIT

# median RUNS CMD...: median wall time in ms of RUNS runs (output folder emptied before each run);
# leaves the largest peak RSS (KiB) in $peakfile (read it with peak_mib).
median() {
    local runs=$1
    shift
    local times=() start end peak=0
    for ((i = 0; i < runs; i++)); do
        rm -rf "$out" && mkdir -p "$out"
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
    local sorted
    sorted=$(printf '%s\n' "${times[@]}" | sort -n)
    local middle
    middle=$(echo "$sorted" | sed -n "$(((runs + 1) / 2))p")
    awk -v us="$middle" 'BEGIN { printf "%.1f", us / 1000 }'
}

mib() { awk -v k="$1" 'BEGIN { printf "%.1f", k / 1024 }'; }
peak_mib() { mib "$(cat "$peakfile")"; }

echo
echo "| Corpus | Task | korvel-cli ms | cp -r ms | read limit ms | bsdtar ms | unzip ms | korvel-cli peak MiB |"
echo "|---|---|---|---|---|---|---|---|"
start_ms=$(median 5 "$cli" --version)
echo "| - | process start (korvel-cli --version) | $start_ms | | | | | $(peak_mib) |"
for name in many typical big; do
    runs=3
    archive=$corpus/$name.pod
    size=$(stat -c %s "$archive")
    if [ "$name" = many ]; then
        # The directory region: header, records and name table, up to the data of entry 0.
        dirbytes=$(od -An -t d4 -j 104 -N 4 "$archive" | tr -d ' ')
        read_ms=$(median "$runs" head -c "$dirbytes" "$archive")
        read_label="$read_ms (head -c $dirbytes)"
    else
        read_ms=$(median "$runs" cat "$archive")
        read_label="$read_ms (cat)"
    fi
    list_ms=$(median "$runs" "$cli" list "$archive")
    list_peak=$(peak_mib)
    tar_list=$(median "$runs" bsdtar -tf "$corpus/$name.tar")
    zip_list=$(median "$runs" unzip -l "$corpus/$name.zip")
    echo "| $name | list | $list_ms | | $read_label | $tar_list | $zip_list | $list_peak |"

    extract_ms=$(median "$runs" "$cli" extract "$archive" --to "$out")
    extract_peak=$(peak_mib)
    cp_ms=$(median "$runs" cp -r "$corpus/tree/$name" "$out/copy")
    cat_ms=$(median "$runs" cat "$archive")
    tar_ms=$(median "$runs" bsdtar -xf "$corpus/$name.tar" -C "$out")
    zip_ms=$(median "$runs" unzip -q -o "$corpus/$name.zip" -d "$out")
    echo "| $name ($(mib $((size / 1024))) MiB) | extract | $extract_ms | $cp_ms | $cat_ms (cat) | $tar_ms | $zip_ms | $extract_peak |"
done
cp "$corpus/big.pod" "$corpus/big-patch.pod"
patch_ms=$(median 5 "$cli" compatiblize "$corpus/big-patch.pod" TRUCK00.TRK)
echo "| big | compatiblize (whole command) | $patch_ms | | | | | $(peak_mib) |"
rm -f "$corpus/big-patch.pod"
