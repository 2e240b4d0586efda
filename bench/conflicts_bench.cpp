// Conflicts of the mounted list: the first search over a large game folder and the refresh after
// the list was reordered.
//
//   conflicts_bench --corpus DIR   writes the game folder under DIR/conflicts and exits
//   conflicts_bench [benchmark flags]   runs on $KORVEL_BENCH_CORPUS (default /tmp/korvel-bench),
//                                       writing the game folder first when missing
//
// The game folder mounts 2,000 POD1 archives of 1,500 entries each. Each archive holds 30 paths
// from a shared pool of 3,000 (so every pooled path has about 20 holders); half the pooled paths
// hold the same 16 bytes everywhere, the other half differ in content and mostly in size.

#include "mounter/conflicts.h"
#include "platform/file_services.h"
#include "platform/path_map.h"
#include "pod_writer.h"

#include <QDir>
#include <QFile>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kCorpusVersion = 1;
constexpr int kArchives = 2000;
constexpr int kEntries = 1500;
constexpr int kShared = 30;
constexpr int kPool = 3000;

QString corpusRoot() {
    const QByteArray env = qgetenv("KORVEL_BENCH_CORPUS");
    return (env.isEmpty() ? QStringLiteral("/tmp/korvel-bench") : QString::fromLocal8Bit(env)) +
           QStringLiteral("/conflicts");
}

std::string archiveName(int i) {
    char name[32];
    std::snprintf(name, sizeof name, "ADDON\\A%04d.POD", i);
    return name;
}

bool writeCorpus() {
    const QString root = corpusRoot();
    QFile done(root + QStringLiteral("/version"));
    if (done.open(QIODevice::ReadOnly) && done.readAll().toInt() == kCorpusVersion)
        return true;
    done.close();
    QDir(root).removeRecursively();
    if (!QDir().mkpath(root + QStringLiteral("/GAME/ADDON")))
        return false;
    for (int a = 0; a < kArchives; ++a) {
        korvel::testing::PodWriter pod;
        char name[32];
        for (int e = 0; e < kEntries - kShared; ++e) {
            std::snprintf(name, sizeof name, "A%04d\\F%05d.BIN", a, e);
            pod.add(name, std::string(8, static_cast<char>('a' + e % 26)));
        }
        for (int s = 0; s < kShared; ++s) {
            const int pooled = (a * 7 + s * 101) % kPool;
            std::snprintf(name, sizeof name, s % 3 == 0 ? "shared\\s%04d.bin" : "SHARED\\S%04d.BIN", pooled);
            const bool same = pooled % 2 == 0;
            std::string data(same ? 16 : 16 + a % 5, static_cast<char>(pooled & 0x7F));
            if (!same)
                data[0] = static_cast<char>(a & 0xFF);
            pod.add(name, data);
        }
        const std::string bytes = pod.pod1();
        QFile file(root + QStringLiteral("/GAME/") + QString::fromStdString(archiveName(a)).replace('\\', '/'));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), qint64(bytes.size())) != qint64(bytes.size()))
            return false;
    }
    return done.open(QIODevice::WriteOnly | QIODevice::Truncate) && done.write(QByteArray::number(kCorpusVersion)) > 0;
}

struct Game {
    Game() : files(paths) {
        paths.mapDrive('C', corpusRoot());
        for (int a = 0; a < kArchives; ++a)
            mounted.push_back(archiveName(a));
    }
    korvel::PathMap paths;
    korvel::FileServices files;
    std::vector<std::string> mounted;
};

void firstComputation(benchmark::State& state) {
    Game game;
    size_t paths = 0;
    for (auto _ : state) {
        korvel::ConflictFinder finder(game.files);
        const auto report = finder.find("C:\\GAME", game.mounted);
        if (!report) {
            state.SkipWithError("the search failed");
            return;
        }
        paths = report->paths.size();
    }
    state.counters["paths"] = double(paths);
}

void refreshAfterReorder(benchmark::State& state) {
    Game game;
    korvel::ConflictFinder finder(game.files);
    if (!finder.find("C:\\GAME", game.mounted)) {
        state.SkipWithError("the search failed");
        return;
    }
    int step = 0;
    int reread = 0;
    for (auto _ : state) {
        // Moves one archive to the top, as Top does.
        const size_t from = size_t(step++ * 37 % kArchives);
        std::rotate(game.mounted.begin(), game.mounted.begin() + std::ptrdiff_t(from),
                    game.mounted.begin() + std::ptrdiff_t(from) + 1);
        const auto report = finder.find("C:\\GAME", game.mounted);
        benchmark::DoNotOptimize(report.ok());
        reread += finder.listingsRead() + finder.entriesHashed();
    }
    state.counters["reread"] = double(reread);
}

} // namespace

BENCHMARK(firstComputation)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(refreshAfterReorder)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--corpus") == 0) {
        qputenv("KORVEL_BENCH_CORPUS", argv[2]);
        return writeCorpus() ? 0 : 1;
    }
    if (!writeCorpus()) {
        std::fprintf(stderr, "could not write the game folder under %s\n", qPrintable(corpusRoot()));
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
