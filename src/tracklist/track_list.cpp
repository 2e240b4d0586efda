#include "track_list.h"

#include "platform/game_text.h"
#include "startup/default_track_list.h"
#include "startup/settings_names.h"
#include "startup/settings_store.h"
#include "startup/typed_settings.h"

namespace korvel {

namespace {

// A document saved on another system ends its lines with CR/LF or LF; those never belong to a field.
std::string_view withoutLineBreaks(std::string_view text) {
    while (!text.empty() && (text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    return text;
}

} // namespace

TrackListParse parseTrackList(std::string_view value) {
    TrackListParse parse;
    if (value.empty())
        return parse;
    const std::vector<std::string> pieces = splitText(value, settings::kTrackRowSeparator);
    for (size_t i = 0; i < pieces.size(); ++i) {
        const std::vector<std::string> columns = splitText(withoutLineBreaks(pieces[i]), settings::kListSeparator);
        if (columns.size() < 3) {
            parse.failure = unexpectedError(
                QStringLiteral("The track list is damaged: row %1 (\"%2\") does not hold a name, a race type and "
                               "a path. Only the rows before it are shown.")
                    .arg(i + 1)
                    .arg(fromGameText(pieces[i])));
            break;
        }
        parse.rows.push_back({columns[0], columns[1], columns[2]});
    }
    return parse;
}

std::string trackCaption(const TrackRow& row) {
    return row.name + "\t<" + row.raceType + ">";
}

TrackMenu LoadTrackList(std::string_view value) {
    TrackListParse parse = parseTrackList(value);
    TrackMenu menu;
    menu.entries.reserve(parse.rows.size());
    for (const TrackRow& row : parse.rows)
        menu.entries.push_back({trackCaption(row), row.path});
    menu.failure = std::move(parse.failure);
    return menu;
}

std::string readTrackList(SettingsStore& store) {
    return ProgramSettings(store).trackList().value_or(std::string());
}

std::string storedOrDefaultTrackList(SettingsStore& store) {
    std::string value = readTrackList(store);
    return value.empty() ? std::string(kDefaultTrackList) : value;
}

std::optional<std::string> trackListFromReply(std::string_view reply) {
    if (!reply.starts_with(kTrackListMark))
        return std::nullopt;
    return std::string(withoutLineBreaks(reply.substr(kTrackListMark.size())));
}

} // namespace korvel
