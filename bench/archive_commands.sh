#!/usr/bin/env bash
# Whole-command timings of korvel-cli on the archive corpora, beside GNU tar, bsdtar, unzip and cp -r
# on the same files (and head/cat as the read limit). Run by ./scripts/bench; KORVEL_BENCH_BUILD names
# the Release build and KORVEL_BENCH_CORPUS the corpus folder (default /tmp/korvel-bench).
# KORVEL_BENCH_RUNS sets the runs per figure (default 3) and KORVEL_BENCH_ONLY limits the corpora
# (e.g. "typical"). Prints Markdown tables of medians in milliseconds, korvel-cli's ratio to each
# peer of the same run, and korvel-cli's peak memory.
set -euo pipefail
build=${KORVEL_BENCH_BUILD:?KORVEL_BENCH_BUILD must name the build folder}
corpus=${KORVEL_BENCH_CORPUS:-/tmp/korvel-bench}
runs=${KORVEL_BENCH_RUNS:-3}
only=${KORVEL_BENCH_ONLY:-many typical big}
cli=$build/app/korvel-cli
"$build/bench/archive_bench" --corpus "$corpus"

# Equivalent tar and zip (stored, uncompressed) of each corpus's files, made once.
for name in $only; do
    [ -s "$corpus/$name.tar" ] || tar -cf "$corpus/$name.tar" -C "$corpus/tree/$name" .
    [ -s "$corpus/$name.zip" ] || (cd "$corpus/tree/$name" && zip -0 -q -r "$corpus/$name.zip" .)
done

out=$corpus/out
source "$(dirname "$0")/lib/timing.sh"
trap 'rm -rf "$out" "$timing" "$peakfile" "$cpufile"' EXIT
# Every run writes into an emptied folder, with the previous run's writes already on the disk.
before_run() {
    rm -rf "$out" && mkdir -p "$out"
    sync
}

echo
echo "Process start (median of $((runs * 3)) batches of back-to-back runs):"
echo
echo "| Command | ms | trivial process (/bin/true) ms | difference ms | peak MiB |"
echo "|---|---|---|---|---|"
true_ms=$(quick $((runs * 3)) /bin/true)
# A small listing: the 64 entries of the `big` corpus (its directory is 2.6 KB).
for command in "--version" "list $corpus/big.pod"; do
    # shellcheck disable=SC2086 # the command's words
    start_ms=$(quick $((runs * 3)) "$cli" $command)
    echo "| korvel-cli ${command/$corpus\//} | $start_ms | $true_ms |" \
        "$(awk -v a="$start_ms" -v b="$true_ms" 'BEGIN { printf "%.2f", a - b }') | $(peak_mib) |"
done

echo
echo "Listing (median of $runs batches of back-to-back runs; ratios are korvel-cli / peer):"
echo
echo "| Corpus | korvel-cli ms | read limit ms | GNU tar -tf ms | bsdtar -tf ms | unzip -l ms | / read limit | / GNU tar | / bsdtar | / unzip | peak MiB |"
echo "|---|---|---|---|---|---|---|---|---|---|---|"
for name in $only; do
    archive=$corpus/$name.pod
    # The directory region: header, records and (POD2) name table, up to the data of entry 0.
    if [ "$(head -c 4 "$archive" | tr -d '\0')" = POD2 ]; then
        dirbytes=$(od -An -t d4 -j 104 -N 4 "$archive" | tr -d ' ')
    else
        dirbytes=$((84 + 40 * $(od -An -t d4 -j 0 -N 4 "$archive" | tr -d ' ')))
    fi
    read_ms=$(quick "$runs" head -c "$dirbytes" "$archive")
    list_ms=$(quick "$runs" "$cli" list "$archive")
    list_peak=$(peak_mib)
    gnu_ms=$(quick "$runs" tar -tf "$corpus/$name.tar")
    bsd_ms=$(quick "$runs" bsdtar -tf "$corpus/$name.tar")
    zip_ms=$(quick "$runs" unzip -l "$corpus/$name.zip")
    echo "| $name | $list_ms | $read_ms (head -c $dirbytes) | $gnu_ms | $bsd_ms | $zip_ms |" \
        "$(ratio "$list_ms" "$read_ms") | $(ratio "$list_ms" "$gnu_ms") | $(ratio "$list_ms" "$bsd_ms") |" \
        "$(ratio "$list_ms" "$zip_ms") | $list_peak |"
done

echo
echo "Extraction (median of $runs runs, into an emptied folder; ratios are korvel-cli / peer):"
echo
echo "| Corpus | korvel-cli ms | GNU tar -xf ms | bsdtar -xf ms | unzip ms | cp -r ms | cat ms | / GNU tar | / bsdtar | / unzip | / cp -r | peak MiB |"
echo "|---|---|---|---|---|---|---|---|---|---|---|---|"
for name in $only; do
    archive=$corpus/$name.pod
    size=$(stat -c %s "$archive")
    extract_ms=$(median "$runs" "$cli" extract "$archive" --to "$out")
    extract_peak=$(peak_mib)
    gnu_ms=$(median "$runs" tar -xf "$corpus/$name.tar" -C "$out")
    bsd_ms=$(median "$runs" bsdtar -xf "$corpus/$name.tar" -C "$out")
    zip_ms=$(median "$runs" unzip -q -o "$corpus/$name.zip" -d "$out")
    cp_ms=$(median "$runs" cp -r "$corpus/tree/$name" "$out/copy")
    cat_ms=$(median "$runs" cat "$archive")
    echo "| $name ($(mib $((size / 1024))) MiB) | $extract_ms | $gnu_ms | $bsd_ms | $zip_ms | $cp_ms | $cat_ms |" \
        "$(ratio "$extract_ms" "$gnu_ms") | $(ratio "$extract_ms" "$bsd_ms") | $(ratio "$extract_ms" "$zip_ms") |" \
        "$(ratio "$extract_ms" "$cp_ms") | $extract_peak |"
done
