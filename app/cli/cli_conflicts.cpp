// The mounter's read-only reports: which mounted archives hold the same paths, and which are broken.

#include "cli_command.h"

#include "mounter/conflicts.h"
#include "mounter/mounted_archives.h"
#include "platform/game_text.h"
#include "pod/pod_directory.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace korvel::cli {

namespace {

QString stateKey(MountedArchiveState state) {
    switch (state) {
    case MountedArchiveState::Listed:
        return QStringLiteral("listed");
    case MountedArchiveState::NotFound:
        return QStringLiteral("not-found");
    case MountedArchiveState::Damaged:
        return QStringLiteral("damaged");
    }
    return QStringLiteral("damaged");
}

QString digestText(const ConflictHolder& holder) {
    return holder.digest ? QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(holder.digest->data()),
                                                          static_cast<qsizetype>(holder.digest->size()))
                                                   .toHex())
                         : QString();
}

void printJson(const ConflictReport& report) {
    QJsonArray archives;
    for (size_t row = 0; row < report.archives.size(); ++row) {
        const ConflictArchive& archive = report.archives[row];
        QJsonArray alsoIn;
        for (const auto& [other, count] : archive.sharedWith)
            alsoIn.append(QJsonObject{
                {QStringLiteral("row"), other + 1},
                {QStringLiteral("path"), fromGameText(report.archives[static_cast<size_t>(other)].storedPath)},
                {QStringLiteral("files"), count}});
        QJsonObject object{{QStringLiteral("row"), static_cast<int>(row) + 1},
                           {QStringLiteral("path"), fromGameText(archive.storedPath)},
                           {QStringLiteral("state"), stateKey(archive.state)},
                           {QStringLiteral("files"), archive.entryCount},
                           {QStringLiteral("shared"), archive.sharedCount},
                           {QStringLiteral("alsoIn"), alsoIn}};
        if (archive.state == MountedArchiveState::Damaged)
            object.insert(QStringLiteral("error"), archive.error);
        archives.append(object);
    }
    QJsonArray paths;
    for (const ConflictPath& path : report.paths) {
        QJsonArray holders;
        for (const ConflictHolder& holder : path.holders) {
            QJsonObject object{
                {QStringLiteral("row"), holder.archive + 1},
                {QStringLiteral("path"), fromGameText(report.archives[static_cast<size_t>(holder.archive)].storedPath)},
                {QStringLiteral("size"), holder.size}};
            if (holder.digest)
                object.insert(QStringLiteral("sha256"), digestText(holder));
            holders.append(object);
        }
        paths.append(QJsonObject{{QStringLiteral("name"), fromGameText(path.name)},
                                 {QStringLiteral("identical"), path.identical},
                                 {QStringLiteral("holders"), holders}});
    }
    out() << QJsonDocument(QJsonObject{{QStringLiteral("archives"), archives}, {QStringLiteral("paths"), paths}})
                 .toJson(QJsonDocument::Indented);
}

void printText(const ConflictReport& report) {
    auto pathOf = [&](int row) { return fromGameText(report.archives[static_cast<size_t>(row)].storedPath); };
    out() << report.paths.size() << " paths are held by more than one mounted archive.\n";
    for (const ConflictPath& path : report.paths) {
        out() << '\n' << fromGameText(path.name) << '\t' << (path.identical ? "identical" : "differs") << '\n';
        for (size_t i = 0; i < path.holders.size(); ++i) {
            const ConflictHolder& holder = path.holders[i];
            out() << '\t' << (i == 0 ? "loaded earliest" : "loaded later") << '\t' << holder.archive + 1 << '\t'
                  << pathOf(holder.archive) << '\t' << fromGameText(AddCommas(holder.size)) << " bytes";
            if (i > 0)
                out() << '\t' << (sameContent(holder, path.holders.front()) ? "identical" : "differs");
            out() << '\n';
        }
    }
    out() << "\nArchives in mount order:\n";
    for (size_t row = 0; row < report.archives.size(); ++row) {
        const ConflictArchive& archive = report.archives[row];
        out() << row + 1 << '\t' << fromGameText(archive.storedPath) << '\t';
        if (archive.state == MountedArchiveState::NotFound) {
            out() << "Not found\n";
            continue;
        }
        if (archive.state == MountedArchiveState::Damaged) {
            out() << "Damaged: " << archive.error << '\n';
            continue;
        }
        if (archive.sharedWith.empty()) {
            out() << "no files also in other archives\n";
            continue;
        }
        QStringList others;
        for (const auto& [other, count] : archive.sharedWith)
            others << QStringLiteral("%1 (%2)").arg(pathOf(other)).arg(count);
        out() << archive.sharedCount << " of " << archive.entryCount << " files also in " << others.join(", ") << '\n';
    }
}

} // namespace

int runMountedConflicts(const FileServices& files, const std::string& gameFolder,
                        const std::vector<std::string>& storedPaths, bool json) {
    ConflictFinder finder(files);
    const Result<ConflictReport> report = finder.find(gameFolder, storedPaths);
    if (!report)
        return refusedWith(report.failure());
    if (json)
        printJson(*report);
    else
        printText(*report);
    return kExitOk;
}

int runMountedCheck(const FileServices& files, const std::string& gameFolder,
                    const std::vector<std::string>& storedPaths, bool json) {
    const Result<std::vector<MountedCheck>> checks = checkMountedArchives(files, gameFolder, storedPaths);
    if (!checks)
        return refusedWith(checks.failure());
    bool allFine = true;
    QJsonArray rows;
    for (const MountedCheck& row : *checks) {
        allFine = allFine && row.check.fine();
        if (json) {
            QJsonObject object = checkJson(row.check);
            object.insert(QStringLiteral("path"), fromGameText(row.storedPath));
            rows.append(object);
        } else {
            out() << fromGameText(row.storedPath) << '\t' << row.check.summary() << '\n';
        }
    }
    if (json)
        out() << QJsonDocument(rows).toJson(QJsonDocument::Indented);
    return allFine ? kExitOk : kExitRefused;
}

} // namespace korvel::cli
