#include "association.h"

#include "platform/file_services.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <algorithm>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace korvel {

namespace {

constexpr const char* kClassesRoot = "HKEY_CLASSES_ROOT";
constexpr int kToolTimeoutMs = 20000;

std::string classesKey(const char* subkey) {
    return std::string(kClassesRoot) + "\\" + subkey;
}

// The program path as an argument of a desktop entry's Exec line: quoted, with the characters
// that are special inside quotes escaped, and then escaped again as a desktop-entry string.
QString execArgument(const QString& path) {
    QString quoted;
    for (QChar c : path) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') || c == QLatin1Char('\\'))
            quoted += QLatin1Char('\\');
        quoted += c;
    }
    quoted = QLatin1Char('"') + quoted + QLatin1Char('"');
    quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    quoted.replace(QLatin1Char('%'), QLatin1String("%%"));
    return quoted;
}

// Writes the file unless it already holds `bytes`; true when it was written.
bool writeIfChanged(const QString& path, const QByteArray& bytes) {
    QFile current(path);
    if (current.open(QIODevice::ReadOnly) && current.readAll() == bytes)
        return false;
    QDir().mkpath(QFileInfo(path).absolutePath());
    return bool(writeFileAtomically(path, bytes));
}

} // namespace

AssociationOptions AssociationOptions::forThisProgram() {
    AssociationOptions options;
    options.programPath = QCoreApplication::applicationFilePath();
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    options.desktopEntries = true;
#endif
    return options;
}

FileAssociation::FileAssociation(SettingsStore& store, const PathMap& paths, AssociationOptions options)
    : m_store(store), m_paths(paths), m_options(std::move(options)) {}

std::string FileAssociation::openCommand() const {
    std::string program;
    if (m_paths.isIdentity()) {
        program = toGameText(QDir::toNativeSeparators(m_options.programPath));
    } else if (std::optional<std::string> game = m_paths.toGame(m_options.programPath)) {
        program = *game;
    } else {
        program = toGameText(m_options.programPath);
        std::replace(program.begin(), program.end(), '/', '\\');
    }
    std::string name = FileNameOf(program);
    if (const size_t dot = name.rfind('.'); dot != std::string::npos)
        name.resize(dot);
    return "\"" + FolderOf(program) + name + ".exe\" \"%1\"";
}

QString FileAssociation::dataHome() const {
    if (!m_options.dataHome.isEmpty())
        return m_options.dataHome;
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QString FileAssociation::mimePackagePath() const {
    return dataHome() + QStringLiteral("/mime/packages/korvel-pod.xml");
}

QString FileAssociation::desktopEntryPath() const {
    return dataHome() + QStringLiteral("/applications/korvel.desktop");
}

void FileAssociation::associate() {
    m_store.CreateKey(classesKey(".pod"));
    m_store.CreateKey(classesKey("Korvel\\shell\\open\\command"));
    m_store.WriteValue(classesKey(".pod"), "", kProgId);
    m_store.WriteValue(classesKey("Korvel"), "", kFileTypeName);
    m_store.WriteValue(classesKey("Korvel\\shell\\open\\command"), "", openCommand());
    if (!m_options.desktopEntries || dataHome().isEmpty())
        return;

    const QString package =
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                       "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
                       "  <mime-type type=\"%1\">\n"
                       "    <comment>%2</comment>\n"
                       // "*.pod" is Perl documentation too: the archive's own signature decides,
                       // and the name alone weighs less than Perl's glob (50), so Perl text keeps
                       // opening where it did.
                       "    <magic priority=\"80\">\n"
                       "      <match type=\"string\" value=\"POD2\" offset=\"0\"/>\n"
                       "    </magic>\n"
                       "    <glob pattern=\"*.pod\" weight=\"40\"/>\n"
                       "  </mime-type>\n"
                       "</mime-info>\n")
            .arg(QLatin1String(kMimeType), QLatin1String(kFileTypeName));
    // Registering runs at every start: the desktop's databases are only rebuilt after a change.
    if (writeIfChanged(mimePackagePath(), package.toUtf8()))
        runTool(QStringLiteral("update-mime-database"), dataHome() + QStringLiteral("/mime"));
    if (writeDesktopEntry(true))
        runTool(QStringLiteral("update-desktop-database"), dataHome() + QStringLiteral("/applications"));
}

void FileAssociation::dissociate() {
    m_store.DeleteKey(classesKey(".pod"));
    m_store.DeleteKey(classesKey("Korvel"));
    if (!m_options.desktopEntries || dataHome().isEmpty())
        return;
    // What associate() installed goes again, so nothing of ours is left claiming ".pod" files.
    if (QFile::exists(mimePackagePath()) && QFile::remove(mimePackagePath()))
        runTool(QStringLiteral("update-mime-database"), dataHome() + QStringLiteral("/mime"));
    if (QFile::exists(desktopEntryPath()) && QFile::remove(desktopEntryPath()))
        runTool(QStringLiteral("update-desktop-database"), dataHome() + QStringLiteral("/applications"));
}

bool FileAssociation::writeDesktopEntry(bool claimType) const {
    QString entry = QStringLiteral("[Desktop Entry]\n"
                                   "Type=Application\n"
                                   "Name=Korvel\n"
                                   "Comment=Mount, list and extract the POD archives of your racing games\n"
                                   "Exec=%1 %f\n"
                                   "Terminal=false\n"
                                   "Categories=Game;Utility;\n")
                        .arg(execArgument(m_options.programPath));
    if (claimType)
        entry += QStringLiteral("MimeType=%1;\n").arg(QLatin1String(kMimeType));
    return writeIfChanged(desktopEntryPath(), entry.toUtf8());
}

void FileAssociation::runTool(const QString& tool, const QString& folder) const {
    if (!m_options.runDesktopTools)
        return;
    const QString program = QStandardPaths::findExecutable(tool);
    if (program.isEmpty())
        return;
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, {folder});
    if (!process.waitForFinished(kToolTimeoutMs))
        process.kill();
    process.waitForFinished(1000);
}

} // namespace korvel
