// Archive core benchmarks: listing, extraction and the in-place patch on generated corpora.
//
//   archive_bench --corpus DIR   writes the corpora (archives, the same files as folder trees) and exits
//   archive_bench [benchmark flags]   runs on the corpora in $KORVEL_BENCH_CORPUS (default
//                                     /tmp/korvel-bench), writing them first when missing

#include "configurator/track_tools.h"
#include "platform/file_services.h"
#include "platform/path_map.h"
#include "pod/extraction.h"
#include "pod/pod_directory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kCorpusVersion = 1;

struct CorpusEntry {
    std::string name; // "\"-separated
    qint64 size;
};

struct Corpus {
    const char* name;
    bool pod2;
    std::vector<CorpusEntry> entries;
};

// Deterministic content: a byte pattern that depends on the entry and the position.
void fill(std::vector<char>& buffer, qint64 from, size_t count, int entry) {
    buffer.resize(count);
    for (size_t i = 0; i < count; ++i)
        buffer[i] = static_cast<char>(((from + static_cast<qint64>(i)) * 31 + entry * 7) & 0xFF);
}

std::vector<Corpus> corpora() {
    std::vector<Corpus> all;
    Corpus many{"many", true, {}};
    for (int i = 0; i < 100000; ++i) {
        char name[48];
        std::snprintf(name, sizeof name, "D%03d\\F%06d.BIN", i / 1000, i);
        many.entries.push_back({name, 64 + (i % 7) * 16});
    }
    all.push_back(std::move(many));
    Corpus big{"big", false, {}};
    for (int i = 0; i < 64; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, i == 0 ? "TRUCK%02d.TRK" : "ART\\PART%02d.RAW", i);
        big.entries.push_back({name, qint64(16) << 20});
    }
    all.push_back(std::move(big));
    Corpus typical{"typical", false, {}};
    const qint64 total = qint64(60) << 20;
    for (int i = 0; i < 1500; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "%s\\T%04d.%s", i % 3 == 0 ? "ART" : (i % 3 == 1 ? "SND" : "WORLD"), i,
                      i % 3 == 0 ? "RAW" : (i % 3 == 1 ? "WAV" : "BIN"));
        typical.entries.push_back({name, total / 1500 + (i % 2 == 0 ? 100 : -100)});
    }
    all.push_back(std::move(typical));
    return all;
}

void putInt32(std::string& out, qint64 value) {
    const auto v = static_cast<quint32>(value);
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

bool writeCorpus(const QString& dir, const Corpus& corpus) {
    std::string directory;
    std::string names;
    for (const CorpusEntry& entry : corpus.entries)
        names += entry.name + '\0';
    const qint64 count = static_cast<qint64>(corpus.entries.size());
    qint64 offset = corpus.pod2 ? 96 + 20 * count + static_cast<qint64>(names.size()) : 84 + 40 * count;
    if (corpus.pod2) {
        directory = "POD2";
        putInt32(directory, 0);
        directory += std::string(80, '\0').replace(0, 10, "bench pod2");
        putInt32(directory, count);
        putInt32(directory, 0);
    } else {
        putInt32(directory, count);
        directory += std::string(80, '\0').replace(0, 10, "bench pod1");
    }
    qint64 nameOffset = 0;
    for (const CorpusEntry& entry : corpus.entries) {
        if (corpus.pod2) {
            putInt32(directory, nameOffset);
            putInt32(directory, entry.size);
            putInt32(directory, offset);
            putInt32(directory, 0);
            putInt32(directory, 0);
            nameOffset += static_cast<qint64>(entry.name.size()) + 1;
        } else {
            std::string field = entry.name;
            field.resize(32, '\0');
            directory += field;
            putInt32(directory, entry.size);
            putInt32(directory, offset);
        }
        offset += entry.size;
    }
    if (corpus.pod2)
        directory += names;

    QFile archive(dir + QStringLiteral("/%1.pod").arg(corpus.name));
    if (!archive.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    archive.write(directory.data(), static_cast<qint64>(directory.size()));
    std::vector<char> buffer;
    const QString tree = dir + QStringLiteral("/tree/%1").arg(corpus.name);
    for (size_t e = 0; e < corpus.entries.size(); ++e) {
        const CorpusEntry& entry = corpus.entries[e];
        const QString path = tree + QLatin1Char('/') + QString::fromStdString(entry.name).replace('\\', '/');
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        for (qint64 done = 0; done < entry.size;) {
            const size_t chunk = static_cast<size_t>(std::min<qint64>(entry.size - done, qint64(1) << 20));
            fill(buffer, done, chunk, static_cast<int>(e));
            if (done == 0 && std::strstr(entry.name.c_str(), ".TRK"))
                std::memcpy(buffer.data(), "truck\r\nversion =4\r\n", 19);
            archive.write(buffer.data(), static_cast<qint64>(chunk));
            file.write(buffer.data(), static_cast<qint64>(chunk));
            done += static_cast<qint64>(chunk);
        }
    }
    return archive.error() == QFileDevice::NoError;
}

bool ensureCorpus(const QString& dir) {
    QFile stamp(dir + QStringLiteral("/.complete"));
    if (stamp.open(QIODevice::ReadOnly) && stamp.readAll().trimmed() == QByteArray::number(kCorpusVersion))
        return true;
    stamp.close();
    QDir(dir).removeRecursively();
    QDir().mkpath(dir);
    for (const Corpus& corpus : corpora()) {
        std::fprintf(stderr, "writing the %s corpus...\n", corpus.name);
        if (!writeCorpus(dir, corpus))
            return false;
    }
    if (!stamp.open(QIODevice::WriteOnly))
        return false;
    stamp.write(QByteArray::number(kCorpusVersion));
    return true;
}

QString corpusDir() {
    const QString dir = qEnvironmentVariable("KORVEL_BENCH_CORPUS");
    return dir.isEmpty() ? QStringLiteral("/tmp/korvel-bench") : dir;
}

struct Host {
    korvel::PathMap paths = korvel::PathMap::forHost();
    korvel::FileServices files{paths};
    std::string game(const QString& host) const { return paths.toGame(QFileInfo(host).absoluteFilePath()).value(); }
};

void listArchive(benchmark::State& state, const char* name) {
    Host host;
    const std::string path = host.game(corpusDir() + QStringLiteral("/%1.pod").arg(name));
    for (auto _ : state) {
        auto listing = korvel::ListPOD(host.files, path);
        if (!listing)
            state.SkipWithError("listing failed");
        benchmark::DoNotOptimize(listing);
    }
}

void extractArchive(benchmark::State& state, const char* name) {
    Host host;
    const std::string path = host.game(corpusDir() + QStringLiteral("/%1.pod").arg(name));
    const QString out = corpusDir() + QStringLiteral("/bench-out-%1").arg(name);
    auto listing = korvel::ListPOD(host.files, path);
    if (!listing) {
        state.SkipWithError("listing failed");
        return;
    }
    QDir(out).removeRecursively();
    QDir().mkpath(out);
    const std::string destination = host.game(out);
    for (auto _ : state) {
        auto done = korvel::ExtractFiles(host.files, *listing, korvel::allRows(*listing), destination,
                                         korvel::ExtractOptions{true, true});
        if (!done)
            state.SkipWithError("extraction failed");
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(listing->archiveSize));
    QDir(out).removeRecursively();
}

void patchNearStart(benchmark::State& state) {
    Host host;
    const std::string path = host.game(corpusDir() + QStringLiteral("/big.pod"));
    auto listing = korvel::ListPOD(host.files, path);
    if (!listing) {
        state.SkipWithError("listing failed");
        return;
    }
    for (auto _ : state) {
        auto patched = korvel::compatiblizeTruck(host.files, path, listing->entries[0].start);
        if (!patched)
            state.SkipWithError("patch failed");
    }
}

} // namespace

BENCHMARK_CAPTURE(listArchive, many_100000_pod2, "many")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(listArchive, typical_1500, "typical")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(extractArchive, typical_60MiB, "typical")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(extractArchive, big_1GiB, "big")->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(patchNearStart)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--corpus") == 0)
        return ensureCorpus(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
    if (!ensureCorpus(corpusDir())) {
        std::fprintf(stderr, "could not write the corpora under %s\n", qPrintable(corpusDir()));
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
