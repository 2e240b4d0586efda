#include "path_map.h"

#include "game_codec.h"
#include "game_text.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

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

// The typed text without surrounding blanks and one pair of surrounding double quotes.
QString unquoted(const QString& typed) {
    QString text = typed.trimmed();
    if (text.size() >= 2 && text.startsWith(QLatin1Char('"')) && text.endsWith(QLatin1Char('"')))
        text = text.mid(1, text.size() - 2);
    return text;
}

bool looksLikeGamePath(const QString& text) {
    return text.size() >= 2 && text.at(1) == QLatin1Char(':') && text.at(0).unicode() < 0x80 && text.at(0).isLetter();
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
    const QString prefix = hostWinePrefix();
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

QString PathMap::hostWinePrefix() {
#ifdef Q_OS_WIN
    return QString();
#else
    const QString prefix = qEnvironmentVariable("WINEPREFIX");
    return prefix.isEmpty() ? QDir::homePath() + QStringLiteral("/.wine") : prefix;
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
    const std::vector<std::string> pieces = splitText(rest, '\\');
    // When the path exists as written, every component matches as written: one status call
    // answers for all of them (".." is left to the walk below, which takes it textually).
    if (std::none_of(pieces.begin(), pieces.end(), [](const std::string& piece) { return piece == ".."; })) {
        QString joined = base;
        for (const std::string& piece : pieces) {
            if (piece.empty() || piece == ".")
                continue;
            if (!joined.endsWith(QLatin1Char('/')))
                joined += QLatin1Char('/');
            joined += win32ComponentName(fromGameText(piece));
        }
        if (joined != base && QFileInfo::exists(joined))
            return joined;
    }
    for (const std::string& piece : pieces) {
        if (piece.empty() || piece == ".")
            continue;
        if (piece == "..") {
            base = QFileInfo(base).path();
            continue;
        }
        const QString name = win32ComponentName(fromGameText(piece));
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

QString PathMap::win32ComponentName(const QString& name) {
    qsizetype end = name.size();
    while (end > 0 && (name.at(end - 1) == QLatin1Char(' ') || name.at(end - 1) == QLatin1Char('.')))
        --end;
    if (end == 0)
        return name;
    return name.left(end);
}

std::optional<std::string> PathMap::toGame(const QString& hostPath) const {
    Result<std::string> game = gamePathOf(hostPath);
    if (!game)
        return std::nullopt;
    return std::move(*game);
}

Result<std::string> PathMap::gamePathOf(const QString& hostPath) const {
    auto encoded = [&](const QString& text) -> Result<std::string> {
        if (std::optional<std::string> bytes = encodeGameText(text))
            return std::move(*bytes);
        return refused(unrepresentableMessage(QDir::toNativeSeparators(hostPath)));
    };
    if (m_identity)
        return encoded(QDir::toNativeSeparators(hostPath));
    const QString clean = QDir::cleanPath(QFileInfo(hostPath).absoluteFilePath());
    char bestLetter = 0;
    qsizetype bestLength = -1;
    for (const auto& [letter, root] : m_drives) {
        const bool holds = root == QLatin1String("/") || clean == root || clean.startsWith(root + QLatin1Char('/'));
        if (holds && root.size() > bestLength) {
            bestLetter = letter;
            bestLength = root.size();
        }
    }
    if (!bestLetter)
        return refused(QStringLiteral("No drive of the game holds %1.").arg(hostPath));
    const QString& root = m_drives.at(bestLetter);
    QString rest = root == QLatin1String("/") ? clean.mid(1) : clean.mid(root.size() + 1);
    Result<std::string> tail = encoded(rest.replace(QLatin1Char('/'), QLatin1Char('\\')));
    if (!tail)
        return tail;
    return std::string(1, bestLetter) + ":\\" + *tail;
}

Result<QString> PathMap::typedHostPath(const QString& typed) const {
    const QString text = unquoted(typed);
    if (text.isEmpty())
        return refused(QStringLiteral("No path was given."));
    if (text == QLatin1String("~") || text.startsWith(QLatin1String("~/")) || text.startsWith(QLatin1String("~\\")))
        return QDir::cleanPath(QDir::homePath() + QLatin1Char('/') + text.mid(2));
    if (m_identity)
        return QDir::cleanPath(QFileInfo(QDir::fromNativeSeparators(text)).absoluteFilePath());
    if (looksLikeGamePath(text)) {
        std::optional<std::string> game = encodeGameText(text);
        if (!game)
            return refused(unrepresentableMessage(text));
        std::replace(game->begin(), game->end(), '/', '\\');
        const QString host = toHost(*game);
        if (host.isEmpty())
            return refused(QStringLiteral("No folder is mapped for drive %1: (%2). Give the path on this computer "
                                          "instead, or map the drive with KORVEL_DRIVES.")
                               .arg(text.at(0).toUpper())
                               .arg(text));
        return host;
    }
    return QDir::cleanPath(QFileInfo(text).absoluteFilePath());
}

Result<std::string> PathMap::typedGamePath(const QString& typed) const {
    Result<QString> host = typedHostPath(typed);
    if (!host)
        return host.failure();
    if (!m_identity) {
        // A game path typed as such is kept as typed, so that "C:\Games" stays on C: even where Z: holds it too.
        const QString text = unquoted(typed);
        if (looksLikeGamePath(text)) {
            if (std::optional<std::string> game = encodeGameText(text)) {
                std::replace(game->begin(), game->end(), '/', '\\');
                return std::move(*game);
            }
        }
    }
    return gamePathOf(*host);
}

} // namespace korvel
