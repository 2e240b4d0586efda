#pragma once

#include "platform/path_map.h"
#include "settings_store.h"

#include <QString>

#include <string>

namespace korvel {

// How the program registers itself as the handler of ".pod" archives.
struct AssociationOptions {
    // Host path of the program the desktop should start for an archive.
    QString programPath;
    // Also register with the desktop's own file-type service (shared-mime-info and a desktop
    // entry); on by default where there is no registry.
    bool desktopEntries = false;
    // The user's data folder ($XDG_DATA_HOME); empty for the desktop's default.
    QString dataHome;
    // Run update-mime-database and update-desktop-database when they are installed.
    bool runDesktopTools = true;

    // The running program and the defaults of this platform.
    static AssociationOptions forThisProgram();
};

// The ".pod" file association: the three classes-root entries in the settings store and, on
// desktops without a registry, the MIME type and desktop entry that make the file manager open an
// archive with the program, passing its path.
//
// The MIME type is recognised by the archive's "POD2" signature; by name alone it weighs less than
// Perl documentation, which shares the ".pod" extension.
//
// Unregistering deletes the keys the way the store deletes keys, so the entries themselves stay
// behind. On the desktop side the MIME type and the desktop entry are removed again.
class FileAssociation {
public:
    FileAssociation(SettingsStore& store, const PathMap& paths, AssociationOptions options);

    void associate();
    void dissociate();

    // The classes-root open command: the program path as "folder\name.exe" in double quotes, a
    // blank, and "%1" in double quotes.
    std::string openCommand() const;

    QString mimePackagePath() const;
    QString desktopEntryPath() const;

    static constexpr const char* kProgId = "Korvel";
    static constexpr const char* kFileTypeName = "Gravlen Forge POD File";
    static constexpr const char* kMimeType = "application/x-pod-archive";

private:
    QString dataHome() const;
    // True when the entry on disk changed.
    bool writeDesktopEntry(bool claimType) const;
    void runTool(const QString& tool, const QString& folder) const;

    SettingsStore& m_store;
    const PathMap& m_paths;
    AssociationOptions m_options;
};

} // namespace korvel
