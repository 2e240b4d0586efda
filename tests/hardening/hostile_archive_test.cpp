#include "child_run.h"
#include "pod_writer.h"
#include "temp_game.h"

#include "pod/extraction.h"
#include "pod/pod_directory.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Archives made to hurt: sparse files whose directories claim millions of entries or a name table of
// tens of megabytes, and destinations holding links that lead out of them. Listing stays within a
// second of processor time and 64 MB; no layout of links makes an extraction write outside.

namespace korvel::testing {
namespace {

// ---- sparse archives: bounded time and memory ----

struct SparseArchive {
    const char* what;
    bool pod2;
    qint64 length;      // the file's length; all but the header is a hole of zeros
    std::int32_t count; // the header's entry count
    int exitCode;
    const char* said; // on stdout when listed, on stderr when refused
};

void PrintTo(const SparseArchive& row, std::ostream* out) {
    *out << row.what;
}

constexpr qint64 kMiB = qint64(1) << 20;

const SparseArchive kSparseArchives[] = {
    {"POD2 of 64 MiB, a name table of NUL bytes, 1,000 entries", true, 64 * kMiB, 1000, 0, "Total Files: 1,000"},
    {"POD2 of 64 MiB, a name table of NUL bytes, the most entries listed", true, 64 * kMiB,
     std::int32_t(kMaxPodEntries), 0, "Total Files: 1,048,576"},
    {"POD2 of 64 MiB claiming 3,000,000 entries", true, 64 * kMiB, 3000000, 1,
     "This POD lists 3,000,000 files, more than Korvel can show."},
    {"POD1 of 4 GiB claiming 107,374,180 entries", false, qint64(4) << 30, std::int32_t(((qint64(4) << 30) - 84) / 40),
     1, "This POD lists 107,374,180 files, more than Korvel can show."},
};

class SparseArchives : public ::testing::TestWithParam<SparseArchive> {};

TEST_P(SparseArchives, listOrAreRefusedWithinASecondAnd64MB) {
#ifndef Q_OS_UNIX
    GTEST_SKIP() << "peak memory is measured with wait4()";
#else
    const SparseArchive& row = GetParam();
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString path = temp.filePath(QStringLiteral("HOSTILE.POD"));
    std::string header;
    if (row.pod2) {
        header = "POD2" + std::string(96 + 20 - 4, '\0');
        putInt32(header, 88, row.count);
        putInt32(header, 96 + 8, std::int32_t(row.length - 16)); // entry 0's data: the name table runs to it
    } else {
        header = std::string(84, '\0');
        putInt32(header, 0, row.count);
    }
    ASSERT_TRUE(writeFile(path, header));
    ASSERT_TRUE(QFile::resize(path, row.length)) << "a sparse file of " << row.length << " bytes";

    const MeasuredResult run = runMeasured(cliProgram(), {QStringLiteral("list"), path}, temp.filePath("out.txt"));
    ASSERT_TRUE(run.finished) << row.what << " did not end by itself:\n" << run.err.toStdString();
    EXPECT_EQ(run.exitCode, row.exitCode) << run.err.toStdString();
    const QByteArray said = row.exitCode == 0 ? readFile(temp.filePath("out.txt")).left(4096) : run.err;
    EXPECT_TRUE(said.contains(row.said)) << said.toStdString();
    EXPECT_LT(run.cpuSeconds, 1.0) << row.what;
#ifndef KORVEL_TEST_ASAN
    EXPECT_LT(run.peakRssKiB, 64 * 1024) << row.what;
#endif
#endif
}

INSTANTIATE_TEST_SUITE_P(Crafted, SparseArchives, ::testing::ValuesIn(kSparseArchives));

// ---- links inside the destination ----

// A destination prepared by hand before an archive is extracted into it: `links` are symbolic links
// (name beneath the destination -> target beneath the test's folder).
struct LinkLayout {
    const char* what;
    std::vector<std::pair<const char*, const char*>> links;
    std::vector<const char*> folders; // real folders made in the destination first
    const char* entry;                // the archive's one entry
    bool refused;                     // else it is extracted beside the links
};

void PrintTo(const LinkLayout& row, std::ostream* out) {
    *out << row.what;
}

const std::vector<LinkLayout>& linkLayouts() {
    static const std::vector<LinkLayout> rows = {
        {"a folder link", {{"ART", "outside"}}, {}, "ART\\X.RAW", true},
        {"a folder link under another case", {{"art", "outside"}}, {}, "ART\\X.RAW", true},
        {"a folder link below a real folder", {{"DATA/Sub", "outside"}}, {"DATA"}, "DATA\\SUB\\X.RAW", true},
        {"a dangling folder link", {{"ART", "outside/none"}}, {}, "ART\\X.RAW", true},
        {"a file link", {{"X.RAW", "outside/X.RAW"}}, {}, "X.RAW", true},
        {"a file link under another case", {{"x.raw", "outside/X.RAW"}}, {}, "X.RAW", true},
        {"a dangling file link", {{"X.RAW", "outside/NEW.RAW"}}, {}, "X.RAW", true},
        {"links planted at temporary names",
         {{"X.RAW.korvel-part", "outside/X.RAW"}, {".X.RAW.korvel-part", "outside/X.RAW"}},
         {},
         "X.RAW",
         false},
    };
    return rows;
}

// Every file and link under `folder` with its bytes (links as their target).
QStringList snapshot(const QString& folder) {
    QStringList items;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.nextFileInfo());
        QString item = QDir(folder).relativeFilePath(info.filePath());
        if (info.isSymLink()) {
            item += QStringLiteral(" -> ") + info.symLinkTarget();
        } else if (info.isFile()) {
            item += QStringLiteral(": ") + QString::fromLatin1(readFile(info.filePath()));
        }
        items << item;
    }
    items.sort();
    return items;
}

class LinksInTheDestination : public ::testing::TestWithParam<LinkLayout> {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_drive.root().size() > 0);
        const QString root = m_drive.root();
        m_drive.write("C:\\outside\\X.RAW", "the victim");
        m_drive.write("C:\\dest\\seed.txt", "s"); // the desktop's folder test finds an ordinary file
        for (const char* folder : GetParam().folders)
            m_drive.write("C:\\dest\\" + std::string(folder) + "\\seed.txt", "s");
        for (const auto& [name, target] : GetParam().links)
            ASSERT_TRUE(QFile::link(root + "/" + QLatin1String(target), root + "/dest/" + QLatin1String(name))) << name;
        PodWriter pod;
        pod.add(GetParam().entry, "extracted bytes");
        m_drive.write("C:\\A.POD", pod.pod2());
        m_outside = snapshot(root + QStringLiteral("/outside"));
    }

    void expectNothingOutsideChanged() {
        EXPECT_EQ(snapshot(m_drive.root() + QStringLiteral("/outside")), m_outside);
        for (const auto& [name, target] : GetParam().links)
            EXPECT_TRUE(QFileInfo(m_drive.root() + "/dest/" + QLatin1String(name)).isSymLink())
                << name << " was replaced";
    }

    TempDrive m_drive;
    QStringList m_outside;
};

// Both rules: the desktop's in-place writes and korvel-cli's temporary file + rename.
TEST_P(LinksInTheDestination, areRefusedUnderBothExtractionRules) {
    const LinkLayout& row = GetParam();
    Result<PodDirectory> listing = ListPOD(m_drive.files(), "C:\\A.POD");
    ASSERT_TRUE(listing.ok());
    for (bool cli : {false, true}) {
        SCOPED_TRACE(cli ? "temporary file" : "in place");
        const Result<ExtractSummary> done =
            ExtractFiles(m_drive.files(), *listing, {0}, "C:\\dest", ExtractOptions{cli, cli});
        expectNothingOutsideChanged();
        if (row.refused) {
            ASSERT_FALSE(done.ok());
            EXPECT_EQ(done.failure().kind, FailureKind::WriteError);
            EXPECT_TRUE(done.failure().message.startsWith(QString::fromLatin1(row.entry) + " was not extracted: "))
                << done.failure().message.toStdString();
            EXPECT_TRUE(done.failure().message.contains("is a link, and Korvel never writes through links."))
                << done.failure().message.toStdString();
        } else {
            ASSERT_TRUE(done.ok()) << done.failure().message.toStdString();
            EXPECT_EQ(m_drive.read("C:\\dest\\X.RAW"), "extracted bytes");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryLayout, LinksInTheDestination, ::testing::ValuesIn(linkLayouts()),
                         [](const auto& info) { return paramName(info.param.what); });

} // namespace
} // namespace korvel::testing
