#include "path_map.h"

#include "game_text.h"

#include <QDir>
#include <QFileInfo>

namespace korvel {

namespace {

char driveLetterOf(const std::string& gamePath) {
    if (gamePath.size() >= 2 && gamePath[1] == ':') {
        char c = upperGameChar(gamePath[0]);
        if (c >= 'A' && c <= 'Z')
            return c;
    }
    return 0;
}

QString stripTrailingSlash(QString path) {
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

PathMap::PathMap(bool identity) : m_identity(identity) {}

PathMap PathMap::forHost() {
#ifdef Q_OS_WIN
    return PathMap(true);
#else
    PathMap map;
    map.mapDrive('Z', QStringLiteral("/"));
    QString prefix = qEnvironmentVariable("WINEPREFIX");
    if (prefix.isEmpty())
        prefix = QDir::homePath() + QStringLiteral("/.wine");
    if (QFileInfo(prefix + QStringLiteral("/dosdevices")).isDir())
        map.loadWinePrefix(prefix);
    const QString extra = qEnvironmentVariable("KORVEL_DRIVES");
    for (const QString& item : extra.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const qsizetype eq = item.indexOf(QLatin1Char('='));
        if (eq == 1)
            map.mapDrive(item.at(0).toLatin1(), item.mid(2));
    }
    return map;
#endif
}

void PathMap::mapDrive(char letter, const QString& hostRoot) {
    letter = upperGameChar(letter);
    m_drives[letter] = stripTrailingSlash(QDir::cleanPath(hostRoot));
}

int PathMap::loadWinePrefix(const QString& prefix) {
    QDir devices(prefix + QStringLiteral("/dosdevices"));
    int found = 0;
    const auto entries = devices.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        const QString name = entry.fileName();
        if (name.size() != 2 || name.at(1) != QLatin1Char(':') || !entry.isSymLink())
            continue;
        QString target = entry.symLinkTarget();
        if (target.isEmpty())
            continue;
        mapDrive(name.at(0).toLatin1(), target);
        ++found;
    }
    return found;
}

QString PathMap::driveRoot(char letter) const {
    auto it = m_drives.find(upperGameChar(letter));
    return it == m_drives.end() ? QString() : it->second;
}

bool PathMap::isDriveRoot(const std::string& gamePath) {
    return driveLetterOf(gamePath) != 0 && (gamePath.size() == 2 || (gamePath.size() == 3 && gamePath[2] == '\\'));
}

QString PathMap::matchComponent(const QString& dir, const QString& name) const {
    QFileInfo direct(dir + QLatin1Char('/') + name);
    if (direct.exists() || direct.isSymLink())
        return name;
    const QString folded = name.toCaseFolded();
    // A cached listing is trusted for names it holds; a name it lacks may be new, so the folder is
    // listed again before the name is given up (timestamps are too coarse to tell).
    auto cached = m_listings.constFind(dir);
    if (cached != m_listings.constEnd()) {
        const QString actual = cached->byFoldedName.value(folded);
        if (!actual.isEmpty() && QFileInfo::exists(dir + QLatin1Char('/') + actual))
            return actual;
    }
    if (!QFileInfo(dir).isDir())
        return name;
    Listing listing;
    const QStringList names =
        QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString& entry : names)
        listing.byFoldedName.insert(entry.toCaseFolded(), entry);
    if (m_listings.size() > 4096)
        m_listings.clear();
    const QString actual = listing.byFoldedName.value(folded, name);
    m_listings.insert(dir, std::move(listing));
    return actual;
}

QString PathMap::resolveComponents(QString base, const std::string& rest) const {
    for (const std::string& piece : splitText(rest, '\\')) {
        if (piece.empty() || piece == ".")
            continue;
        if (piece == "..") {
            base = QFileInfo(base).path();
            continue;
        }
        const QString name = fromGameText(piece);
        const QString actual = matchComponent(base, name);
        base = base == QLatin1String("/") ? QLatin1Char('/') + actual : base + QLatin1Char('/') + actual;
    }
    return base;
}

QString PathMap::toHost(const std::string& gamePath) const {
    if (m_identity)
        return fromGameText(gamePath);
    if (gamePath.empty())
        return QString();
    if (char letter = driveLetterOf(gamePath)) {
        auto it = m_drives.find(letter);
        if (it == m_drives.end())
            return QString();
        return resolveComponents(it->second, gamePath.substr(2));
    }
    if (gamePath[0] == '\\')
        return QString(); // a rooted path without a drive names nothing we can map
    return resolveComponents(stripTrailingSlash(QDir::currentPath()), gamePath);
}

std::optional<std::string> PathMap::toGame(const QString& hostPath) const {
    if (m_identity)
        return toGameText(QDir::toNativeSeparators(hostPath));
    const QString clean = QDir::cleanPath(QFileInfo(hostPath).absoluteFilePath());
    char bestLetter = 0;
    qsizetype bestLength = -1;
    for (const auto& [letter, root] : m_drives) {
        const bool holds = root == QLatin1String("/") ||
                           clean == root || clean.startsWith(root + QLatin1Char('/'));
        if (holds && root.size() > bestLength) {
            bestLetter = letter;
            bestLength = root.size();
        }
    }
    if (!bestLetter)
        return std::nullopt;
    const QString& root = m_drives.at(bestLetter);
    QString rest = root == QLatin1String("/") ? clean.mid(1) : clean.mid(root.size() + 1);
    std::string game = std::string(1, bestLetter) + ":\\";
    game += toGameText(QString(rest).replace(QLatin1Char('/'), QLatin1Char('\\')));
    return game;
}

} // namespace korvel
