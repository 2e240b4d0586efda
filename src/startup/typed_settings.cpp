#include "typed_settings.h"

#include "platform/game_text.h"
#include "settings_names.h"

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace korvel {

namespace {

using namespace settings;

constexpr std::string_view kFlagOff = "0";
constexpr std::string_view kFlagOn = "1";
constexpr std::string_view kNewProfileMmpa = "99";
constexpr int kSliderMin = 740;
constexpr int kSliderMax = 5380;

// The whole text as a number; nullopt for anything else ("Error", "", "12abc").
std::optional<double> wholeNumber(const std::string& text) {
    const QByteArray trimmed = QByteArray::fromStdString(text).trimmed();
    bool ok = false;
    const double value = trimmed.toDouble(&ok);
    if (!ok || trimmed.isEmpty() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

bool isOneOf(const std::string& text, std::initializer_list<std::string_view> allowed) {
    for (std::string_view candidate : allowed) {
        if (text == candidate)
            return true;
    }
    return false;
}

bool isFlag(const std::string& text) {
    return isOneOf(text, {"0", "1"});
}
bool isNotMissing(const std::string& text) {
    return text != kError;
}
bool isLogo(const std::string& text) {
    return isOneOf(text, {"1", "2", "3"});
}
bool isScreenLetter(const std::string& text) {
    return isOneOf(text, {"C", "E", "M"});
}
bool isLockIndex(const std::string& text) {
    return isOneOf(text, {"0", "1", "2", "3"});
}
bool isSliderTop(const std::string& text) {
    const std::optional<double> number = wholeNumber(text);
    return number && *number >= kSliderMin && *number <= kSliderMax;
}
bool isTwips(const std::string& text) {
    const std::optional<double> number = wholeNumber(text);
    return number && *number >= 0;
}

int rounded(double value) {
    constexpr double kMax = std::numeric_limits<int>::max();
    constexpr double kMin = std::numeric_limits<int>::min();
    return static_cast<int>(std::lround(std::clamp(value, kMin, kMax)));
}

std::string flagText(bool on) {
    return on ? std::string(kFlagOn) : std::string(kFlagOff);
}

} // namespace

namespace settings {

const std::vector<ProfileRule>& profileRules() {
    using Fallback = ProfileRule::Fallback;
    static const std::vector<ProfileRule> kRules = {
        {kLogo, isLogo, "1"},
        {kScreen, isScreenLetter, "M"},
        {kSlider, isSliderTop, "3060"},
        {kAsPod, isFlag, kFlagOff},
        {kAsPlayer, isFlag, kFlagOff},
        {kAsMonster, isFlag, kFlagOff},
        {kAsChange, isFlag, kFlagOff},
        {kAsExit, isFlag, kFlagOff},
        {kFlat, isFlag, kFlagOff},
        {kSlide, isFlag, kFlagOn},
        {kAutosort, isFlag, kFlagOn},
        {kLock, isLockIndex, kFlagOff},
        {kBrowse, isFlag, kFlagOff},
        {kBrowseDir, isNotMissing, {}, Fallback::Location},
        {kExtraDirs, isNotMissing, kDefaultExtraDirs},
        {kLeft, isTwips, "915"},
        {kTop, isTwips, "1200"},
    };
    return kRules;
}

std::string fallbackText(const ProfileRule& rule, const std::string& location) {
    return rule.kind == ProfileRule::Fallback::Location ? location : std::string(rule.fallback);
}

} // namespace settings

// ---- program key ----

bool ProgramSettings::associate() const {
    return m_store.readProgram(kAssociate) == kFlagOn;
}

std::optional<bool> ProgramSettings::associateChoice() const {
    const std::string stored = m_store.readProgram(kAssociate);
    if (!isFlag(stored))
        return std::nullopt;
    return stored == kFlagOn;
}

void ProgramSettings::createKey() {
    m_store.CreateKey(std::string(kProgramKey));
}

void ProgramSettings::setAssociate(bool on) {
    m_store.writeProgram(kAssociate, flagText(on));
}

std::optional<std::vector<std::string>> ProgramSettings::installedGames() const {
    const std::string list = m_store.readProgram(kInstalledGames);
    if (list == kError)
        return std::nullopt;
    // An empty text is a list without entries, not one entry without a name.
    std::vector<std::string> names;
    for (std::string& name : list.empty() ? std::vector<std::string>() : splitText(list, kListSeparator)) {
        if (name != kError)
            names.push_back(std::move(name));
    }
    return names;
}

void ProgramSettings::setInstalledGames(const std::vector<std::string>& names) {
    m_store.writeProgram(kInstalledGames, names.empty() ? std::string(kError) : joinText(names, kListSeparator));
}

std::optional<std::string> ProgramSettings::trackList() const {
    std::string list = m_store.readProgram(kTrackList);
    if (list == kError)
        return std::nullopt;
    return list;
}

void ProgramSettings::setTrackList(const std::string& text) {
    m_store.writeProgram(kTrackList, text);
}

namespace {

std::string_view addressName(WebAddress which) {
    switch (which) {
    case WebAddress::TrackSite:
        return kTrackSite;
    case WebAddress::TrackList:
        return kTrackListAddress;
    case WebAddress::Home:
        return kWebAddress;
    case WebAddress::Support:
        break;
    }
    return kSupportAddress;
}

} // namespace

QString ProgramSettings::address(WebAddress which) const {
    const std::string stored = m_store.readProgram(addressName(which));
    return stored == kError ? QString() : fromGameText(stored).trimmed();
}

void ProgramSettings::setAddress(WebAddress which, const QString& address) {
    m_store.writeProgram(addressName(which), toGameText(address.trimmed()));
}

// ---- profile subkey ----

std::string ProfileSettings::text(std::string_view name) const {
    return m_store.readProfile(m_profile, name);
}

void ProfileSettings::createKey() {
    m_store.CreateKey(profileKey(m_profile));
}

void ProfileSettings::setText(std::string_view name, const std::string& text) {
    m_store.writeProfile(m_profile, name, text);
}

std::string ProfileSettings::codePage() const {
    std::string stored = text(kCodePage);
    return stored == kError ? std::string() : stored;
}

std::string ProfileSettings::launchCommand() const {
    std::string stored = text(kLaunchCommand);
    return stored == kError ? std::string() : stored;
}

void ProfileSettings::setWindowSize(int width, int height) {
    setText(kSize, std::to_string(width) + ',' + std::to_string(height));
}

void ProfileSettings::setMaximized(bool maximized) {
    setText(kMaximized, flagText(maximized));
}

void ProfileSettings::setCodePage(const std::string& codePage) {
    setText(kCodePage, codePage);
}

void ProfileSettings::setLaunchCommand(const std::string& command) {
    setText(kLaunchCommand, command);
}

std::optional<std::string> ProfileSettings::path(std::string_view name) const {
    std::string stored = text(name);
    if (stored == kError)
        return std::nullopt;
    return stored;
}

std::optional<double> ProfileSettings::number(std::string_view name) const {
    return leadingNumber(text(name));
}

std::optional<std::string> ProfileSettings::location() const {
    return path(kLocation);
}
std::optional<std::string> ProfileSettings::locationIni() const {
    return path(kLocationIni);
}
std::optional<std::string> ProfileSettings::locationExe() const {
    return path(kLocationExe);
}
std::optional<std::string> ProfileSettings::mmpa() const {
    return path(kMmpa);
}
bool ProfileSettings::configurator() const {
    return text(kConfigurator) == "True";
}

void ProfileSettings::addProfile(const std::string& location, const std::string& exePath, bool configurator) {
    setText(kLocation, location);
    setText(kLocationIni, location + "\\POD.INI");
    setText(kLocationExe, exePath);
    setText(kMmpa, std::string(kNewProfileMmpa));
    setConfigurator(configurator);
}

AutosaveSwitches ProfileSettings::autosave() const {
    AutosaveSwitches switches;
    switches.pod = text(kAsPod) == kFlagOn;
    switches.player = text(kAsPlayer) == kFlagOn;
    switches.monster = text(kAsMonster) == kFlagOn;
    switches.onChange = text(kAsChange) == kFlagOn;
    switches.onExit = text(kAsExit) == kFlagOn;
    return switches;
}

std::optional<bool> ProfileSettings::flatButtons() const {
    const std::string stored = text(kFlat);
    if (!isFlag(stored))
        return std::nullopt;
    return stored == kFlagOn;
}

bool ProfileSettings::slide() const {
    const std::optional<double> value = wholeNumber(text(kSlide));
    return value && *value == 1.0;
}

bool ProfileSettings::autosort() const {
    const std::string stored = text(kAutosort);
    if (const std::optional<double> value = wholeNumber(stored))
        return *value != 0;
    return QByteArray::fromStdString(stored).trimmed().compare("True", Qt::CaseInsensitive) == 0;
}

std::optional<ScreenLock> ProfileSettings::lock() const {
    const double value = number(kLock).value_or(0.0);
    for (ScreenLock lock : {ScreenLock::None, ScreenLock::Configurator, ScreenLock::Extractor, ScreenLock::Mounter}) {
        if (value == static_cast<int>(lock))
            return lock;
    }
    return std::nullopt;
}

std::optional<StartScreen> ProfileSettings::screen() const {
    const std::string stored = text(kScreen);
    if (stored == "C")
        return StartScreen::Configurator;
    if (stored == "E")
        return StartScreen::Extractor;
    if (stored == "M")
        return StartScreen::Mounter;
    return std::nullopt;
}

int ProfileSettings::slider() const {
    return rounded(number(kSlider).value_or(0.0));
}
int ProfileSettings::left() const {
    return rounded(number(kLeft).value_or(0.0));
}
int ProfileSettings::top() const {
    return rounded(number(kTop).value_or(0.0));
}
std::optional<std::pair<int, int>> ProfileSettings::windowSize() const {
    const QList<QByteArray> parts = QByteArray::fromStdString(text(kSize)).split(',');
    if (parts.size() != 2)
        return std::nullopt;
    bool wide = false, high = false;
    const double width = parts[0].trimmed().toDouble(&wide);
    const double height = parts[1].trimmed().toDouble(&high);
    if (!wide || !high)
        return std::nullopt;
    return std::pair{rounded(width), rounded(height)};
}

bool ProfileSettings::maximized() const {
    return text(kMaximized) == kFlagOn;
}

bool ProfileSettings::browse() const {
    return text(kBrowse) != kFlagOff;
}
std::string ProfileSettings::browseDir() const {
    return text(kBrowseDir);
}
std::vector<std::string> ProfileSettings::extraDirs() const {
    std::vector<std::string> folders;
    for (std::string& folder : splitText(text(kExtraDirs), kListSeparator)) {
        if (!folder.empty() && folder != kDefaultExtraDirs && folder != kError)
            folders.push_back(std::move(folder));
    }
    return folders;
}

std::vector<std::string> ProfileSettings::recent() const {
    std::vector<std::string> entries;
    for (std::string& piece : splitText(text(kRecent), kListSeparator)) {
        if (!piece.empty() && piece != kError)
            entries.push_back(std::move(piece));
    }
    return entries;
}

void ProfileSettings::setRecent(const std::vector<std::string>& entries) {
    // Each entry behind a separator; a lone separator for an empty list.
    std::string stored = entries.empty() ? std::string(1, kListSeparator) : std::string();
    for (const std::string& entry : entries)
        stored += kListSeparator + entry;
    setText(kRecent, stored);
}

bool ProfileSettings::firstRun() const {
    return text(kFirstRun) != kFlagOff;
}

void ProfileSettings::setAutosave(const AutosaveSwitches& switches) {
    setText(kAsPod, flagText(switches.pod));
    setText(kAsPlayer, flagText(switches.player));
    setText(kAsMonster, flagText(switches.monster));
    setText(kAsChange, flagText(switches.onChange));
    setText(kAsExit, flagText(switches.onExit));
}

void ProfileSettings::setFlatButtons(bool flat) {
    setText(kFlat, flagText(flat));
}
void ProfileSettings::setSlide(bool slide) {
    setText(kSlide, flagText(slide));
}
void ProfileSettings::setConfigurator(bool on) {
    setText(kConfigurator, on ? "True" : "False");
}
void ProfileSettings::setAutosort(bool sort) {
    setText(kAutosort, flagText(sort));
}
void ProfileSettings::setBrowse(bool browse) {
    setText(kBrowse, flagText(browse));
}
void ProfileSettings::setBrowseDir(const std::string& folder) {
    setText(kBrowseDir, folder);
}

void ProfileSettings::setExtraDirs(const std::vector<std::string>& folders) {
    setText(kExtraDirs, folders.empty() ? std::string(kDefaultExtraDirs) : joinText(folders, kListSeparator));
}

void ProfileSettings::setLock(ScreenLock lock) {
    setText(kLock, std::to_string(static_cast<int>(lock)));
}
void ProfileSettings::setSlider(int top) {
    setText(kSlider, std::to_string(top));
}

void ProfileSettings::setPosition(int left, int top) {
    setText(kLeft, std::to_string(left));
    setText(kTop, std::to_string(top));
}

void ProfileSettings::setScreenLetter(const std::string& letter) {
    setText(kScreen, letter);
}
void ProfileSettings::setFirstRunDone() {
    setText(kFirstRun, std::string(kFlagOff));
}

std::vector<std::string> ProfileSettings::readValidated() const {
    std::vector<std::string> stored;
    for (const ProfileRule& rule : profileRules())
        stored.push_back(text(rule.name));
    return stored;
}

void ProfileSettings::repair(const std::vector<std::string>& stored, const std::string& location) {
    const std::vector<ProfileRule>& rules = profileRules();
    for (size_t i = 0; i < rules.size() && i < stored.size(); ++i) {
        if (!rules[i].passes(stored[i]))
            setText(rules[i].name, fallbackText(rules[i], location));
    }
}

} // namespace korvel
