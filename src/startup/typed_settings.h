#pragma once

#include "session.h"
#include "settings_store.h"

#include <QString>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Typed access to the settings store. The store keeps every value as text ("0"/"1",
// "True"/"False", numbers as digits, "Error" for a failed read); this layer is the one place that
// knows those texts. Each value has, side by side below:
//   - the test start-up repairs it with, and the default it writes when the test fails, and
//   - how the program reads it while running (the classic rules, which are more lenient than the
//     test: a missing "Left" reads as 0, a missing "Screen" chooses no mode).
// Everything past this layer sees bools, numbers, enums and paths.
namespace korvel {

// "Screen": the mode shown at start ("C", "E", "M").
enum class StartScreen { Configurator, Extractor, Mounter };
// "Lock": which mode every start uses; None lets "Screen" decide.
enum class ScreenLock { None = 0, Configurator = 1, Extractor = 2, Mounter = 3 };
// The web addresses kept in the program key ("TrackSite", "TrackListAddress", "WebAddress",
// "SupportAddress").
enum class WebAddress { TrackSite, TrackList, Home, Support };

namespace settings {

// One value start-up keeps valid: its test, and what replaces a value that fails it.
struct ProfileRule {
    enum class Fallback {
        Text,     // `fallback`
        Location, // the profile's game folder
    };
    std::string_view name;
    bool (*passes)(const std::string& stored);
    std::string_view fallback;
    Fallback kind = Fallback::Text;
};

// The profile values start-up validates, in the order it repairs them.
const std::vector<ProfileRule>& profileRules();
// The text that replaces a failing value of `rule` for a profile whose folder is `location`.
std::string fallbackText(const ProfileRule& rule, const std::string& location);

} // namespace settings

// The program key's values.
class ProgramSettings {
public:
    explicit ProgramSettings(SettingsStore& store) : m_store(store) {}

    // Makes the program key when it is missing: the store keeps values only in a key that exists.
    void createKey();

    // "Associate" = "1".
    bool associate() const;
    // The stored "Associate" as a choice: nullopt when it is neither "0" nor "1" (start-up then
    // writes "0" without touching the association).
    std::optional<bool> associateChoice() const;
    void setAssociate(bool on);

    // "InstalledGames": nullopt when there is no list (never written, or the "Error" an empty list
    // is stored as); otherwise the names in list order.
    std::optional<std::vector<std::string>> installedGames() const;
    void setInstalledGames(const std::vector<std::string>& names);

    // "TrackList": nullopt when it is not set.
    std::optional<std::string> trackList() const;
    void setTrackList(const std::string& text);

    // A web address as stored, without surrounding blanks and line breaks; empty when not set.
    // The environment may override it (web_addresses.h).
    QString address(WebAddress which) const;
    void setAddress(WebAddress which, const QString& address);

private:
    SettingsStore& m_store;
};

// The values of one game profile.
class ProfileSettings {
public:
    ProfileSettings(SettingsStore& store, std::string profile) : m_store(store), m_profile(std::move(profile)) {}

    const std::string& profile() const { return m_profile; }
    // Makes the profile's key when it is missing, so its values can be written.
    void createKey();

    // The profile itself, as the profiles dialog wrote it. A path or text that cannot be read is
    // nullopt.
    std::optional<std::string> location() const;
    std::optional<std::string> locationIni() const;
    std::optional<std::string> locationExe() const;
    std::optional<std::string> mmpa() const;
    bool configurator() const; // "True"
    // Writes the five values of a newly added profile.
    void addProfile(const std::string& location, const std::string& exePath, bool configurator);

    // Preferences, read the classic way.
    AutosaveSwitches autosave() const;         // each "1"
    std::optional<bool> flatButtons() const;   // "1" flat, "0" raised, anything else: as designed
    bool slide() const;                        // the number 1 ("1", "1.0")
    bool autosort() const;                     // a non-zero number, or "True"
    std::optional<ScreenLock> lock() const;    // leading number, 0 when none; nullopt past 0-3
    std::optional<StartScreen> screen() const; // "C", "E", "M"; nullopt otherwise
    int slider() const;                        // leading number, 0 when none
    int left() const;                          // twips, leading number, 0 when none
    int top() const;
    std::optional<std::pair<int, int>> windowSize() const; // "Size": width,height in twips
    bool maximized() const;                                // "Maximized" is "1"
    bool browse() const;                                   // anything but "0"
    std::string browseDir() const;                         // as stored
    std::vector<std::string> extraDirs() const;            // the list, without empty entries
    bool firstRun() const;                                 // "FirstRun" anything but "0"
    std::string codePage() const;                          // "CodePage": empty when not set (the system's)
    std::string launchCommand() const;                     // "LaunchCommand": empty when the game starts itself

    // Writes, in the stored forms. Like every write to the store they report nothing here; a
    // failed save shows in SettingsStore::takeSaveFailure().
    void setAutosave(const AutosaveSwitches& switches);
    void setFlatButtons(bool flat);
    void setSlide(bool slide);
    void setConfigurator(bool on);
    void setAutosort(bool sort);
    void setBrowse(bool browse);
    void setBrowseDir(const std::string& folder);
    void setExtraDirs(const std::vector<std::string>& folders);
    void setLock(ScreenLock lock);
    void setSlider(int top);
    void setPosition(int left, int top);
    void setWindowSize(int width, int height);
    void setMaximized(bool maximized);
    // "Screen" takes the letter of the window title after "Korvel - ", whatever it is.
    void setScreenLetter(const std::string& letter);
    void setFirstRunDone();
    void setCodePage(const std::string& codePage);
    void setLaunchCommand(const std::string& command);

    // "Recent": the main window's recent archives, newest first.
    std::vector<std::string> recent() const;
    void setRecent(const std::vector<std::string>& entries);

    // Start-up's repair: every validated value that fails its test gets its default. `stored` are
    // the texts as read (indexed like profileRules()); `location` is the game folder.
    void repair(const std::vector<std::string>& stored, const std::string& location);
    // Reads the validated values in rule order.
    std::vector<std::string> readValidated() const;

private:
    std::string text(std::string_view name) const;
    void setText(std::string_view name, const std::string& text);
    std::optional<std::string> path(std::string_view name) const;
    std::optional<double> number(std::string_view name) const;

    SettingsStore& m_store;
    std::string m_profile;
};

} // namespace korvel
