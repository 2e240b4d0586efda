#pragma once

#include "mounter/mounter.h"
#include "mounter/splitter_bounds.h"
#include "platform/game_path.h"
#include "platform/short_path.h"
#include "startup/session.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "temp_game.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace korvel::testing {

// A game folder C:\Games\MTM2 on a temporary drive, with a Mounter over it.
class MounterTest : public ::testing::Test {
protected:
    static constexpr const char* kGame = "C:\\Games\\MTM2";
    static constexpr const char* kIni = "C:\\Games\\MTM2\\POD.INI";

    MounterTest() : settings(drive.registry(), drive.dialogs()) {
        drive.makeFolder(kGame);
        session.currentGame = "MTM2";
        session.location = kGame;
        session.locationIni = kIni;
        session.mmpa = "99";
        session.asPod = "0";
        session.asChange = "0";
        session.shortGameFolder = ShortPath(drive.files(), "", kGame, true) + "\\";
        settings.CreateKey(settings::profileKey("MTM2"));
        settings.writeProfile("MTM2", settings::kExtraDirs, settings::kDefaultExtraDirs);
    }

    Mounter& mounter() {
        if (!m_mounter)
            m_mounter = std::make_unique<Mounter>(session, settings, drive.services());
        return *m_mounter;
    }

    void archive(const std::string& relative) { drive.write(game(relative), "POD"); }
    static std::string game(const std::string& relative) { return joinGamePath(kGame, relative); }

    void writeIni(const std::vector<std::string>& entries) {
        std::string text = std::to_string(entries.size()) + "\r\n";
        for (const std::string& entry : entries)
            text += entry + "\r\n";
        drive.write(kIni, text);
    }

    void autosaveOnChange() {
        session.asPod = "1";
        session.asChange = "1";
    }

    static std::vector<std::string> paths(const EntryList& list) {
        std::vector<std::string> out;
        for (const MountedEntry& row : list.rows())
            out.push_back(row.path);
        return out;
    }
    static std::vector<std::string> texts(const EntryList& list) {
        std::vector<std::string> out;
        for (const MountedEntry& row : list.rows())
            out.push_back(row.text);
        return out;
    }
    static std::vector<int> selected(const EntryList& list) { return list.selectedRows(); }

    // Loads a mounted list of the given archives (created on disk) and scans.
    void mountedOf(const std::vector<std::string>& entries) {
        for (const std::string& entry : entries)
            archive(entry);
        writeIni(entries);
        ASSERT_TRUE(mounter().LoadMountedList().ok());
        mounter().ScanUnmounted();
    }

    void select(EntryList& list, const std::vector<int>& rows) {
        list.clearSelection();
        for (int row : rows)
            list.setSelected(row, true);
    }

    TempDrive drive;
    SettingsStore settings;
    Session session;

private:
    std::unique_ptr<Mounter> m_mounter;
};

} // namespace korvel::testing
