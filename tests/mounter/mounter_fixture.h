#pragma once

#include "mounter/mounter.h"
#include "mounter/pod_ini.h"
#include "mounter/splitter_bounds.h"
#include "platform/game_path.h"
#include "platform/short_path.h"
#include "startup/settings_names.h"
#include "temp_game.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace korvel::testing {

using Entries = std::vector<std::string>;
using Rows = std::vector<int>;

// A game folder C:\Games\MTM2 on a temporary drive, with a Mounter over it and a trash folder of its own.
class MounterTest : public ::testing::Test {
protected:
    static constexpr const char* kGame = "C:\\Games\\MTM2";
    static constexpr const char* kIni = "C:\\Games\\MTM2\\POD.INI";

    MounterTest() : settings(drive.registry(), drive.dialogs()) {
        qputenv("XDG_DATA_HOME", m_home.path().toLocal8Bit());
        drive.makeFolder(kGame);
        session.currentGame = "MTM2";
        session.location = kGame;
        session.locationIni = kIni;
        session.mmpa = "99";
        session.autosave = AutosaveSwitches();
        session.shortGameFolder = ShortPath(drive.files(), "", kGame, true) + "\\";
        settings.CreateKey(settings::profileKey("MTM2"));
        settings.writeProfile("MTM2", settings::kExtraDirs, settings::kDefaultExtraDirs);
    }

    Mounter& mounter() {
        if (!m_mounter)
            m_mounter = std::make_unique<Mounter>(session, settings, drive.services());
        return *m_mounter;
    }

    static std::string game(const std::string& relative) { return joinGamePath(kGame, relative); }
    void archives(const Entries& names) {
        for (const std::string& name : names)
            drive.write(game(name), "POD");
    }
    void writeIni(const Entries& entries) { drive.write(kIni, podIniText(entries)); }
    // POD.INI's modification time: a save gives the file a new one.
    void setIniTime(const QDateTime& time) {
        QFile ini(drive.host(kIni));
        ASSERT_TRUE(ini.open(QIODevice::ReadWrite) && ini.setFileTime(time, QFileDevice::FileModificationTime));
    }
    QDateTime iniTime() const { return QFileInfo(drive.host(kIni)).lastModified(); }
    void autosaveOnChange() { session.autosave.pod = session.autosave.onChange = true; }

    // The rows' stored paths, or their statuses, joined by commas.
    static std::string joined(const EntryList& list, std::string MountedEntry::*field = &MountedEntry::path) {
        std::string text;
        for (const MountedEntry& row : list.rows())
            text += (text.empty() ? "" : ",") + row.*field;
        return text;
    }
    static std::string statuses(const EntryList& list) { return joined(list, &MountedEntry::status); }
    // The rows an outcome asks a list's view to select; "keep" when it leaves the selection alone.
    static std::string selection(const Mounter::Selection& next) {
        if (!next.rows)
            return "keep";
        std::string text = next.add ? "+" : "";
        for (int row : *next.rows)
            text += (text.empty() || text == "+" ? "" : ",") + std::to_string(row);
        return text;
    }

    // Loads a mounted list of the given archives (created on disk), then adds and scans the unmounted ones.
    void mountedOf(const Entries& entries, const Entries& unmounted = {}) {
        archives(entries);
        archives(unmounted);
        writeIni(entries);
        ASSERT_TRUE(mounter().LoadMountedList().ok());
        mounter().ScanUnmounted();
    }

    QTemporaryDir m_home;
    TempDrive drive;
    SettingsStore settings;
    Session session;

private:
    std::unique_ptr<Mounter> m_mounter;
};

} // namespace korvel::testing

using namespace korvel;
using namespace korvel::testing;
