// korvel-cli answers `--version` and plain listings without loading the command module; everything
// it answers must read exactly as the module's answer.

#include "cli_run.h"
#include "pod_writer.h"

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace korvel::testing;

namespace {

class CliLauncher : public CliFolder {
protected:
    void SetUp() override {
        PodWriter trucks;
        trucks.comment("Stock trucks").add("TRUCK\\b.trk", "bravo").add("ART\\A.RAW", std::string(1200, 'a'));
        write("TRUCKS.POD", trucks.pod1());
        PodWriter rally;
        rally.comment("Dust").add("T.SIT", trackInfoText(12, "3")).add("zeta.bin", "z").add("Alpha.bin", "a");
        write("sub/RALLY.POD", rally.pod2());
        PodWriter many; // more text than one output buffer holds
        for (int i = 0; i < 12000; ++i)
            many.add("DATA\\FILE" + std::to_string(12000 - i) + ".BIN", std::string(size_t(i % 7), 'x'));
        write("MANY.POD", many.pod2());
        PodWriter accented;
        accented.comment("Caf\xe9").add("\xc4RGER.TRK", "truck");
        write("ACCENT.POD", accented.pod1());
        PodWriter damaged;
        damaged.add("A.BIN", "a").count(5000);
        write("DAMAGED.POD", damaged.pod1());
        // Names the kernel resolves to other files than the program does: Win32 drops a trailing
        // dot, and ".." is taken as text, not after a link.
        PodWriter decoy;
        decoy.comment("Decoy").add("D.BIN", "d");
        write("TRUCKS.POD.", decoy.pod1());
        write("sub/TRUCKS.POD", decoy.pod1());
        QDir().mkpath(path("sub/deeper"));
        QFile::link(path("sub/deeper"), path("link"));
    }

    // The same command through the module: a code page named on the command line is not one the
    // launcher answers, and it is the one the fixed environment chooses anyway.
    CliRun throughModule(const QStringList& args, const QString& folder = {}) const {
        return cli(QStringList{"--codepage", "1252"} + args, kEnv, folder);
    }

    const QStringList kEnv{"LC_ALL=C", "KORVEL_CODEPAGE="};
};

TEST_F(CliLauncher, answersReadExactlyAsTheCommandModuleWouldGiveThem) {
    const struct {
        const char* what;
        QStringList args;
    } cases[] = {
        {"version", {"--version"}},
        {"POD1", {"list", path("TRUCKS.POD")}},
        {"POD2 sorted, option last, relative path", {"list", "sub/../sub/./RALLY.POD", "--sort"}},
        {"rows across buffer refills", {"list", "--sort", path("MANY.POD")}},
        {"non-ASCII names", {"list", path("ACCENT.POD")}},
        {"damaged directory", {"list", path("DAMAGED.POD")}},
        {"missing file", {"list", path("MISSING.POD")}},
        {"a folder", {"list", path("sub")}},
        {"trailing dot", {"list", path("TRUCKS.POD.")}},
        {"link and dot-dot", {"list", "link/../TRUCKS.POD"}},
        {"two archives", {"list", path("TRUCKS.POD"), path("TRUCKS.POD")}},
    };
    for (const auto& c : cases) {
        const CliRun direct = cli(c.args, kEnv, m_dir.path());
        const CliRun module = throughModule(c.args, m_dir.path());
        EXPECT_EQ(direct.status, module.status) << c.what;
        EXPECT_EQ(direct.out.toStdString(), module.out.toStdString()) << c.what;
        EXPECT_EQ(direct.err.toStdString(), module.err.toStdString()) << c.what;
        EXPECT_FALSE(module.out.isEmpty() && module.err.isEmpty()) << c.what;
    }
}

TEST_F(CliLauncher, versionAndPlainListingsStartWithoutQtWhileOtherListingsLoadIt) {
#ifndef Q_OS_LINUX
    GTEST_SKIP() << "the dynamic loader's trace is read on Linux";
#else
    const QStringList trace = kEnv + QStringList{"LD_DEBUG=files"};
    const struct {
        QStringList args;
        bool loadsQt;
    } cases[] = {
        {{"--version"}, false},
        {{"list", "--sort", path("TRUCKS.POD")}, false},
        {{"list", path("ACCENT.POD")}, true},
        {{"list", path("DAMAGED.POD")}, true},
        {{"list", "--json", path("TRUCKS.POD")}, true},
    };
    for (const auto& c : cases) {
        const CliRun run = cli(c.args, trace);
        EXPECT_TRUE(run.err.contains("calling init")) << "the loader's trace is read";
        EXPECT_EQ(run.err.contains("libQt6Core"), c.loadsQt) << c.args.join(' ').toStdString();
    }
    // A code page the program cannot convert is the module's to refuse.
    const CliRun refused = cli({"list", path("TRUCKS.POD")}, {"KORVEL_CODEPAGE=EBCDIC"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains("KORVEL_CODEPAGE")) << refused.err.toStdString();
#endif
}

TEST_F(CliLauncher, aListingThatCannotBeWrittenFailsTheSameWayOnBothPaths) {
#ifndef Q_OS_LINUX
    GTEST_SKIP() << "/dev/full is Linux's";
#else
    m_childSetup = [] {
        const int full = ::open("/dev/full", O_WRONLY);
        ::dup2(full, 1);
    };
    const CliRun direct = cli({"list", path("MANY.POD")}, kEnv);
    const CliRun module = throughModule({"list", path("MANY.POD")});
    EXPECT_EQ(direct.status, 1);
    EXPECT_EQ(module.status, 1);
    EXPECT_EQ(direct.err, "korvel-cli list: the listing could not be written (No space left on device).\n");
    EXPECT_EQ(module.err, direct.err);
#endif
}

} // namespace
