#include "monster_ini.h"

#include "platform/file_services.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

#include <optional>

namespace korvel {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

// The entry line of `key`, or the reason there is none.
Result<std::string> entryLine(std::string_view text, std::string_view key) {
    const size_t start = text.find(key);
    if (start == std::string_view::npos)
        return readError(QStringLiteral("The entry \"%1\" is missing.").arg(fromGameText(key)));
    const size_t end = text.find(kLineEnd, start);
    if (end == std::string_view::npos)
        return readError(QStringLiteral("The entry \"%1\" is not followed by a line break.").arg(fromGameText(key)));
    return std::string(text.substr(start, end - start));
}

// Replaces every occurrence of the key's current line by `line`.
Status replaceEntry(std::string& text, std::string_view key, std::string_view line) {
    Result<std::string> old = entryLine(text, key);
    if (!old)
        return old.failure();
    text = replaceAll(text, *old, line);
    return {};
}

std::string keyLine(std::string_view key, std::string_view value) {
    std::string line(key);
    line += '=';
    line += value;
    return line;
}

Failure inFile(const Failure& failure, std::string_view path, const QString& after = QString()) {
    Failure located = failure;
    located.message = QStringLiteral("%1\n\n%2").arg(fromGameText(path), failure.message);
    if (!after.isEmpty())
        located.message += QLatin1Char(' ') + after;
    return located;
}

} // namespace

std::string monsterIniPath(std::string_view gameFolder) {
    return joinGamePath(gameFolder, "system\\monster.ini");
}

std::string builtInLanguageFile(int localization) {
    switch (localization) {
    case 1:
        return "UI\\MTM2.loc";
    case 2:
        return "UI\\MTM2-fun.loc";
    case 3:
        return "UI\\MTM2-pig.loc";
    default:
        return {};
    }
}

Result<MonsterSettings> parseMonsterIni(std::string_view text) {
    MonsterSettings settings;
    Result<std::string> track = entryLine(text, kHiddenTrackKey);
    if (!track)
        return track.failure();
    settings.hiddenTrack = track->ends_with("666");

    Result<std::string> horn = entryLine(text, kHornKey);
    if (!horn)
        return horn.failure();
    settings.horn = horn->ends_with('1');

    Result<std::string> language = entryLine(text, kLocalizationKey);
    if (!language)
        return language.failure();
    if (endsWithIgnoreCase(*language, "UI\\MTM2.LOC"))
        settings.localization = 1;
    else if (endsWithIgnoreCase(*language, "UI\\MTM2-FUN.LOC"))
        settings.localization = 2;
    else if (endsWithIgnoreCase(*language, "UI\\MTM2-PIG.LOC"))
        settings.localization = 3;
    else
        settings.localization = 4;
    settings.custom = replaceAll(*language, keyLine(kLocalizationKey, ""), "");
    return settings;
}

Result<std::string> applyMonsterSettings(std::string_view original, const MonsterSettings& settings) {
    if (settings.localization < 1 || settings.localization > 4)
        return refused(QStringLiteral("The language choice must be 1 to 4."));
    if (settings.localization == 4 && settings.custom.find_first_of("\r\n") != std::string::npos)
        return refused(QStringLiteral("The language file's path must be a single line."));

    std::string text(original);
    // First bring both switches to their "on" text, then set them as the controls say.
    for (const auto& [key, line] :
         {std::pair{kHiddenTrackKey, keyLine(kHiddenTrackKey, "666")}, std::pair{kHornKey, keyLine(kHornKey, "1")},
          std::pair{kHiddenTrackKey, keyLine(kHiddenTrackKey, settings.hiddenTrack ? "666" : "0")},
          std::pair{kHornKey, keyLine(kHornKey, settings.horn ? "1" : "0")}}) {
        if (Status status = replaceEntry(text, key, line); !status)
            return status.failure();
    }
    const std::string language =
        settings.localization == 4 ? settings.custom : builtInLanguageFile(settings.localization);
    if (Status status = replaceEntry(text, kLocalizationKey, keyLine(kLocalizationKey, language)); !status)
        return status.failure();
    return text;
}

Result<MonsterSettings> LoadMonsterIni(const FileServices& files, std::string_view gameFolder,
                                       LoadedFileStamp* loaded) {
    const std::string path = monsterIniPath(gameFolder);
    Result<std::string> text = files.readAll(path);
    if (!text)
        return text.failure();
    if (loaded)
        *loaded = files.stampFor(path, *text);
    Result<MonsterSettings> settings = parseMonsterIni(*text);
    if (!settings)
        return inFile(settings.failure(), path);
    return settings;
}

Status SaveMonsterIni(const FileServices& files, std::string_view gameFolder, const MonsterSettings& settings,
                      const LoadedFileStamp* loaded, LoadedFileStamp* written) {
    const std::string path = monsterIniPath(gameFolder);
    // Checking `loaded` and writing happen under the lock; without it the lines are written over.
    std::optional<FileLock> lock;
    if (loaded) {
        Result<FileLock> locked = files.lockForChange(path);
        if (!locked)
            return locked.failure();
        lock = std::move(*locked);
    }
    Result<std::string> text = files.readAll(path);
    if (!text)
        return text.failure();
    Result<std::string> changed = applyMonsterSettings(*text, settings);
    if (!changed)
        return inFile(changed.failure(), path, QStringLiteral("The file was left unchanged."));
    Result<LoadedFileStamp> saved = files.writeChecked(path, *changed, loaded);
    if (!saved)
        return saved.failure();
    if (written)
        *written = *saved;
    return {};
}

std::string customLanguagePath(std::string_view chosenPath, std::string_view gameFolder) {
    return replaceAll(chosenPath, withTrailingBackslash(gameFolder), "");
}

} // namespace korvel
