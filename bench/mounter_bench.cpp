// Mounter benchmarks: loading POD.INI, scanning for unmounted archives and the counter, on generated
// game folders at three sizes.
//
//   mounter_bench --corpus DIR   writes the game folders under DIR/mounter and exits
//   mounter_bench [benchmark flags]   runs on $KORVEL_BENCH_CORPUS (default /tmp/korvel-bench),
//                                     writing the game folders first when missing
//
// Size 1 is a game folder with 5,000 archives in 100 first-level subfolders, two extra folders of
// 100 archives each, and a POD.INI of 2,000 entries (one in twenty missing on disk); size N has N
// times each of these.

#include "mounter/mounter.h"
#include "platform/file_services.h"
#include "platform/path_map.h"
#include "platform/registry_tree.h"
#include "platform/short_path.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr int kCorpusVersion = 1;
constexpr int kScales[] = {1, 4, 16};

QString corpusRoot() {
    const QByteArray env = qgetenv("KORVEL_BENCH_CORPUS");
    return (env.isEmpty() ? QStringLiteral("/tmp/korvel-bench") : QString::fromLocal8Bit(env)) +
           QStringLiteral("/mounter");
}

QString scaleFolder(const QString& root, int scale) {
    return root + QStringLiteral("/x%1").arg(scale);
}

bool touch(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("POD1", 4) == 4;
}

bool writeScale(const QString& root, int scale) {
    const QString base = scaleFolder(root, scale);
    const QString stamp = base + QStringLiteral("/version");
    QFile done(stamp);
    if (done.open(QIODevice::ReadOnly) && done.readAll().toInt() == kCorpusVersion)
        return true;
    QDir(base).removeRecursively();
    std::string ini;
    const int archives = 5000 * scale, folders = 100 * scale, entries = 2000 * scale;
    for (int i = 0; i < archives; ++i) {
        const QString folder = QStringLiteral("FOLDER%1").arg(i % folders, 4, 10, QLatin1Char('0'));
        const QString name = QStringLiteral("TRACK%1.POD").arg(i, 6, 10, QLatin1Char('0'));
        if (i < folders && !QDir().mkpath(base + QStringLiteral("/GAME/") + folder))
            return false;
        if (!touch(base + QStringLiteral("/GAME/") + folder + QLatin1Char('/') + name))
            return false;
        if (i < entries)
            ini += (folder + QLatin1Char('\\') + (i % 20 == 19 ? QStringLiteral("GONE.POD") : name)).toStdString() +
                   "\r\n";
    }
    for (const char* extra : {"EXTRA1", "EXTRA2"}) {
        QDir().mkpath(base + QLatin1Char('/') + QLatin1String(extra));
        for (int i = 0; i < 100 * scale; ++i)
            touch(base + QStringLiteral("/%1/MORE%2.POD").arg(QLatin1String(extra)).arg(i, 5, 10, QLatin1Char('0')));
    }
    QFile podIni(base + QStringLiteral("/GAME/POD.INI"));
    if (!podIni.open(QIODevice::WriteOnly))
        return false;
    podIni.write(QByteArray::number(entries) + "\r\n");
    podIni.write(ini.data(), qint64(ini.size()));
    podIni.close();
    return done.open(QIODevice::WriteOnly | QIODevice::Truncate) && done.write(QByteArray::number(kCorpusVersion)) > 0;
}

bool writeCorpus(const QString& root) {
    for (int scale : kScales) {
        if (!writeScale(root, scale))
            return false;
    }
    return true;
}

// Everything a Mounter needs, made fresh so that no directory listing is cached between runs.
struct Setup {
    explicit Setup(int scale) : files(paths), settings(registry, dialogs) {
        paths.mapDrive('C', scaleFolder(corpusRoot(), scale));
        session.currentGame = "Bench";
        session.location = "C:\\GAME";
        session.locationIni = "C:\\GAME\\POD.INI";
        session.mmpa = "99";
        session.shortGameFolder = ShortPath(files, "", session.location, true) + "\\";
        settings.CreateKey(korvel::settings::profileKey("Bench"));
        settings.writeProfile("Bench", korvel::settings::kExtraDirs, "C:\\EXTRA1|C:\\EXTRA2\\");
    }

    struct NoDialogs : korvel::Dialogs {
        korvel::MessageAnswer message(const QString&, const QString&, korvel::MessageIcon,
                                      korvel::MessageButtons) override {
            return korvel::MessageAnswer::No;
        }
        std::optional<QString> input(const QString&, const QString&, const QString&) override { return {}; }
        std::vector<std::string> openFiles(const korvel::OpenFileRequest&) override { return {}; }
        std::optional<std::string> browseFolder(const QString&, const std::string&) override { return {}; }
    };
    struct NoShell : korvel::Shell {
        bool openDocument(const std::string&) override { return false; }
        bool openUrl(const QString&) override { return false; }
        bool launch(const std::string&, const std::string&) override { return false; }
    };

    korvel::PathMap paths;
    korvel::FileServices files;
    korvel::RegistryTree registry;
    NoDialogs dialogs;
    NoShell shell;
    korvel::Services services{paths, files, registry, dialogs, shell};
    korvel::SettingsStore settings;
    korvel::Session session;
};

void loadScanCounter(benchmark::State& state) {
    const int scale = int(state.range(0));
    size_t rows = 0;
    for (auto _ : state) {
        Setup setup(scale);
        korvel::Mounter mounter(setup.session, setup.settings, setup.services);
        if (!mounter.LoadMountedList().ok()) {
            state.SkipWithError("POD.INI could not be loaded or saved");
            return;
        }
        mounter.ScanUnmounted();
        rows = size_t(mounter.mounted().size() + mounter.unmounted().size());
        benchmark::DoNotOptimize(mounter.counterText());
    }
    state.counters["rows"] = double(rows);
}

void loadOnly(benchmark::State& state) {
    const int scale = int(state.range(0));
    for (auto _ : state) {
        Setup setup(scale);
        korvel::Mounter mounter(setup.session, setup.settings, setup.services);
        mounter.LoadMountedList(korvel::Mounter::LoadMode::ReadOnly);
        benchmark::DoNotOptimize(mounter.mounted().size());
    }
}

void scanOnly(benchmark::State& state) {
    Setup setup(int(state.range(0)));
    korvel::Mounter mounter(setup.session, setup.settings, setup.services);
    mounter.LoadMountedList(korvel::Mounter::LoadMode::ReadOnly);
    for (auto _ : state) {
        mounter.ScanUnmounted();
        benchmark::DoNotOptimize(mounter.unmounted().size());
    }
}

} // namespace

BENCHMARK(loadScanCounter)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(loadOnly)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(scanOnly)->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--corpus") == 0) {
        qputenv("KORVEL_BENCH_CORPUS", argv[2]);
        return writeCorpus(corpusRoot()) ? 0 : 1;
    }
    if (!writeCorpus(corpusRoot())) {
        std::fprintf(stderr, "could not write the game folders under %s\n", qPrintable(corpusRoot()));
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
