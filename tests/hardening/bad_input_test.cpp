#include "bad_inputs.h"
#include "child_run.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <cctype>
#include <ostream>

#include <gtest/gtest.h>

// Every file of tests/data/bad/ goes through korvel-cli, the same cores the window uses, in a child
// process with a deadline and a memory limit: it must give its message, and must neither hang, crash,
// grow without bound nor write outside the destination of an extraction.

namespace korvel::testing {

void PrintTo(const BadInput& row, std::ostream* out) {
    *out << row.file << " (" << row.what << ")";
}

namespace {

constexpr qint64 kMemoryLimit = qint64(768) << 20;
constexpr std::chrono::seconds kDeadline{15};

QByteArray committed(const BadInput& row) {
    QFile file(badInputFolder() + QLatin1Char('/') + QLatin1String(row.file));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Every path beneath `folder`, relative to it.
QStringList contentsOf(const QString& folder) {
    QStringList paths;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        paths << QDir(folder).relativeFilePath(it.next());
    paths.sort();
    return paths;
}

class BadInputCorpus : public ::testing::TestWithParam<BadInput> {};

TEST(BadInputFiles, areTheCommittedOutputOfTheirGenerators) {
    // KORVEL_WRITE_BAD_INPUTS=1 rewrites the folder from the generators (after changing one of them).
    const bool write = qEnvironmentVariableIntValue("KORVEL_WRITE_BAD_INPUTS") == 1;
    QDir().mkpath(badInputFolder());
    QStringList names;
    for (const BadInput& row : badInputs()) {
        const std::string bytes = row.make();
        EXPECT_LE(bytes.size(), 100000u) << row.file << ": the corpus stays small";
        names << QLatin1String(row.file);
        if (write) {
            QFile file(badInputFolder() + QLatin1Char('/') + QLatin1String(row.file));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(bytes.data(), qint64(bytes.size()));
        }
        EXPECT_EQ(committed(row).toStdString(), bytes) << row.file << " differs from its generator";
    }
    names.sort();
    EXPECT_EQ(QDir(badInputFolder()).entryList(QDir::Files, QDir::Name), names)
        << "every file of the folder has its row";
}

TEST_P(BadInputCorpus, givesItsMessageWithinBoundedTimeAndMemory) {
    const BadInput& row = GetParam();
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString root = temp.path();
    const QString game = root + QStringLiteral("/game");
    const QString out = root + QStringLiteral("/out");
    QDir().mkpath(game + QStringLiteral("/system"));

    QString placed = root + QLatin1Char('/') + QLatin1String(row.file);
    switch (row.use) {
    case BadInputUse::PodIni:
        placed = game + QStringLiteral("/POD.INI");
        break;
    case BadInputUse::Monster:
        placed = game + QStringLiteral("/system/monster.ini");
        break;
    case BadInputUse::Drivers:
        placed = game + QStringLiteral("/player.pro");
        break;
    default:
        break;
    }
    ASSERT_TRUE(QFile::copy(badInputFolder() + QLatin1Char('/') + QLatin1String(row.file), placed)) << row.file;

    ChildLimits limits;
    limits.timeout = kDeadline;
    limits.addressSpace = kMemoryLimit;
    limits.environment.insert(QStringLiteral("KORVEL_REGISTRY"), root + QStringLiteral("/registry.json"));
    QStringList args;
    switch (row.use) {
    case BadInputUse::List:
        args = {QStringLiteral("list"), placed};
        break;
    case BadInputUse::Extract:
        args = {QStringLiteral("extract"), placed, QStringLiteral("--to"), out};
        break;
    case BadInputUse::PodIni:
        args = {QStringLiteral("mounter"), QStringLiteral("--game"), game, QStringLiteral("show")};
        break;
    case BadInputUse::Monster:
        args = {QStringLiteral("monster"), QStringLiteral("--game"), game};
        break;
    case BadInputUse::Drivers:
        args = {QStringLiteral("drivers"), QStringLiteral("--game"), game, QStringLiteral("list")};
        break;
    case BadInputUse::Palette:
        args = {QStringLiteral("palette"), placed};
        break;
    case BadInputUse::Settings:
        limits.environment.insert(QStringLiteral("KORVEL_REGISTRY"), placed);
        args = {QStringLiteral("settings"), QStringLiteral("show")};
        break;
    }
    const QStringList before = contentsOf(root);

    const ChildResult result = runChild(cliProgram(), args, limits);
    ASSERT_TRUE(result.started);
    ASSERT_FALSE(result.timedOut) << row.file << " still ran after " << kDeadline.count() << " s";
    ASSERT_FALSE(result.crashed) << row.file << " crashed:\n" << result.err.toStdString();
    EXPECT_EQ(result.exitCode, row.exitCode) << row.file << " (" << row.what << ")\n" << result.err.toStdString();
    const QString said = QString::fromUtf8(row.exitCode == 0 ? result.out : result.err);
    if (!row.message.isEmpty()) {
        EXPECT_TRUE(said.contains(row.message)) << row.file << " said:\n" << said.toStdString();
    }
    if (row.exitCode != 0) {
        EXPECT_FALSE(result.err.contains("error of type 6 ")) << "an overflow must be refused as an unreadable POD";
    }

    if (row.use == BadInputUse::Extract) {
        // Only files inside the destination may appear.
        QStringList after = contentsOf(root);
        after.removeIf([](const QString& path) { return path == QLatin1String("out") || path.startsWith("out/"); });
        EXPECT_EQ(after, before) << row.file << " wrote outside the destination";
        EXPECT_FALSE(QFile::exists(out + QStringLiteral("/../../ESCAPE.TXT")));
        EXPECT_FALSE(QFile::exists(QStringLiteral("/tmp/ESCAPE.TXT")));
    }
}

std::string rowName(const ::testing::TestParamInfo<BadInput>& info) {
    std::string name = info.param.file;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(EveryFile, BadInputCorpus, ::testing::ValuesIn(badInputs()), rowName);

} // namespace
} // namespace korvel::testing
