#pragma once

#include "platform/file_services.h"
#include "platform/path_map.h"
#include "platform/registry_tree.h"
#include "platform/services.h"
#include "recording_shell.h"
#include "scripted_dialogs.h"

#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

namespace korvel::testing {

// A temporary drive C: with everything a core needs around it: the drive map, the file services,
// an in-memory registry, scripted dialogs and a recording shell. Paths in tests are written as the
// game writes them ("C:\Games\MTM2\POD.INI").
class TempDrive {
public:
    TempDrive();

    PathMap& paths() { return m_paths; }
    FileServices& files() { return m_files; }
    RegistryTree& registry() { return m_registry; }
    ScriptedDialogs& dialogs() { return m_dialogs; }
    RecordingShell& shell() { return m_shell; }
    Services& services() { return m_services; }

    QString root() const { return m_dir.path(); }
    QString host(const std::string& gamePath) const { return m_paths.toHost(gamePath); }

    // Writes a file (creating its folders) and reads one back, by game path.
    void write(const std::string& gamePath, const std::string& bytes);
    std::string read(const std::string& gamePath) const;
    bool exists(const std::string& gamePath) const;
    void makeFolder(const std::string& gamePath);
    void remove(const std::string& gamePath);

private:
    QTemporaryDir m_dir;
    PathMap m_paths;
    FileServices m_files;
    RegistryTree m_registry;
    ScriptedDialogs m_dialogs;
    RecordingShell m_shell;
    Services m_services;
};

// What a generated game folder holds.
struct GameLayout {
    std::string folder = "C:\\Games\\MTM2";
    std::string executable = "monster.exe";
    std::vector<std::string> podIni = {"TRUCKS.POD", "ADDON\\MYTRACK.POD", "MISSING.POD"};
    // Archives to create (relative to the folder, or absolute), with their contents.
    std::vector<std::pair<std::string, std::string>> archives;
    bool monsterIni = true;
    bool playerPro = true;
};

// Writes the game folder of `layout` into the drive: the executable stand-in, POD.INI, the
// archives, system\monster.ini and player.pro.
void buildGameFolder(TempDrive& drive, const GameLayout& layout);

// The default contents of the generated settings files.
std::string sampleMonsterIni();
std::string samplePlayerPro();

} // namespace korvel::testing
