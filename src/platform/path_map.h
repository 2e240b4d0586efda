#pragma once

#include "result.h"

#include <QHash>
#include <QString>

#include <map>
#include <optional>
#include <string>

namespace korvel {

// Turns the game's own path texts ("C:\Games\MTM2\POD.INI") into host paths and back.
//
// On Windows the two are the same text. Elsewhere a drive map gives each drive letter a host folder
// (for a game inside a Wine prefix, the prefix's dosdevices links; otherwise Z: is "/", as Wine does
// it), and each component is matched without regard to case against the host directory.
class PathMap {
public:
    // A map with no drives (every absolute game path is unmapped) unless identity is asked for.
    explicit PathMap(bool identity = false);

    // The map for this machine: identity on Windows; elsewhere Z: = "/", the drives of the Wine
    // prefix named by WINEPREFIX (or ~/.wine), and KORVEL_DRIVES ("C=/some/dir;D=/other") on top.
    static PathMap forHost();
    // The Wine prefix this machine's games run in: $WINEPREFIX, else ~/.wine (empty on Windows).
    static QString hostWinePrefix();

    void mapDrive(char letter, const QString& hostRoot);
    // Reads <prefix>/dosdevices/<letter>: links. Returns the number of drives found.
    int loadWinePrefix(const QString& prefix);
    QString driveRoot(char letter) const;
    bool isIdentity() const { return m_identity; }

    // Host path of a game path. Components that exist under another case resolve to the name on
    // disk; components that do not exist are kept as written (so new files can be made). A relative
    // game path is taken relative to the process's current folder. Empty for an unmapped drive.
    QString toHost(const std::string& gamePath) const;

    // Game path of a host path, through the drive whose folder holds it most closely
    // (nullopt when no drive holds it or the game's code page cannot hold its name).
    std::optional<std::string> toGame(const QString& hostPath) const;
    // The same, with the reason when there is none, naming the path.
    Result<std::string> gamePathOf(const QString& hostPath) const;

    // A path as the user typed it, in a box or on the command line: a host path ("/home/ann/MTM2",
    // "~/MTM2", or relative to the current folder) or a game path ("C:\Games\MTM2" through the drive
    // map, "Z:\home\ann\MTM2").
    Result<QString> typedHostPath(const QString& typed) const;
    Result<std::string> typedGamePath(const QString& typed) const;

    // A path component as Win32 opens it: trailing blanks and dots dropped ("TRUCKS.POD " names
    // TRUCKS.POD). "." and ".." and a component of nothing else stay as they are.
    static QString win32ComponentName(const QString& name);

    // True when the game path names the root of its drive ("C:" or "C:\").
    static bool isDriveRoot(const std::string& gamePath);

private:
    QString resolveComponents(QString base, const std::string& rest) const;
    QString matchComponent(const QString& dir, const QString& name) const;

    bool m_identity = false;
    std::map<char, QString> m_drives; // upper-case letter -> host folder, no trailing "/"

    struct Listing {
        QHash<QString, QString> byFoldedName;
    };
    mutable QHash<QString, Listing> m_listings;
};

} // namespace korvel
