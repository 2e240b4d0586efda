#include "player_profile.h"

#include "platform/file_services.h"
#include "platform/game_path.h"
#include "platform/game_text.h"

namespace korvel {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

// Hands out the lines of a text one by one; the last line may lack its line break.
class LineReader {
public:
    explicit LineReader(std::string_view text) : m_text(text) {}

    std::optional<std::string_view> next() {
        if (m_pos >= m_text.size())
            return std::nullopt;
        const size_t end = m_text.find(kLineEnd, m_pos);
        std::string_view line;
        if (end == std::string_view::npos) {
            line = m_text.substr(m_pos);
            m_pos = m_text.size();
        } else {
            line = m_text.substr(m_pos, end - m_pos);
            m_pos = end + kLineEnd.size();
        }
        ++m_number;
        return line;
    }
    size_t lineNumber() const { return m_number; }

private:
    std::string_view m_text;
    size_t m_pos = 0;
    size_t m_number = 0;
};

bool endsInTrack(std::string_view line) {
    return endsWithIgnoreCase(line, ".TRK");
}

} // namespace

std::string playerProfilePath(std::string_view gameFolder) {
    return joinGamePath(gameFolder, "player.pro");
}

DriverLoad parsePlayerProfile(std::string_view text) {
    DriverLoad load;
    LineReader lines(text);
    if (lines.next() != kPlayerProfileMark)
        return load;

    auto damaged = [&](const QString& why) {
        load.list.state = DriverRecords::State::Damaged;
        load.failure = readError(why);
        return load;
    };

    const std::optional<std::string_view> countLine = lines.next();
    const std::optional<double> count = countLine ? leadingNumber(*countLine) : std::nullopt;
    if (!count || *count < 0)
        return damaged(QStringLiteral("The driver count on line 2 is not a number."));
    lines.next(); // read and ignored; always written as "1"

    // Every record takes at least two lines, so a count beyond the text's size can only end in the
    // damage check below; clamping it keeps the conversion defined.
    const long long total = *count > static_cast<double>(text.size()) ? static_cast<long long>(text.size()) + 1
                                                                      : static_cast<long long>(*count);
    bool previousEndsInTrack = false;
    for (long long i = 0; i < total; ++i) {
        DriverEntry entry;
        auto take = [&]() -> bool {
            const std::optional<std::string_view> line = lines.next();
            if (!line)
                return false;
            entry.record.append(*line).append(kLineEnd);
            previousEndsInTrack = endsInTrack(*line);
            return true;
        };
        const auto endedAt = [&] {
            return QStringLiteral("The file ends inside driver %1 of %2 (after line %3).")
                .arg(i + 1)
                .arg(total)
                .arg(lines.lineNumber());
        };
        const bool readData = i == 0 || !previousEndsInTrack;
        if (!take())
            return damaged(endedAt());
        entry.name = entry.record.substr(0, entry.record.size() - kLineEnd.size());
        if (readData) {
            do {
                if (!take())
                    return damaged(endedAt());
            } while (!previousEndsInTrack);
        }
        for (int trailing = 0; trailing < 5; ++trailing) {
            if (!take())
                return damaged(endedAt());
        }
        load.list.entries.push_back(std::move(entry));
    }
    load.list.state = DriverRecords::State::Read;
    return load;
}

std::string playerProfileText(const DriverRecords& list) {
    std::string text(kPlayerProfileMark);
    text.append(kLineEnd).append(std::to_string(list.count())).append(kLineEnd).append("1").append(kLineEnd);
    for (const DriverEntry& entry : list.entries)
        text += entry.record;
    return text;
}

DriverLoad LoadDrivers(const FileServices& files, std::string_view gameFolder) {
    const std::string path = playerProfilePath(gameFolder);
    Result<std::string> text = files.readAll(path);
    if (!text) {
        DriverLoad load;
        load.failure = text.failure();
        return load;
    }
    DriverLoad load = parsePlayerProfile(*text);
    load.list.loadedFrom = files.stampFor(path, *text);
    if (load.failure)
        load.failure->message = QStringLiteral("%1\n\n%2").arg(fromGameText(path), load.failure->message);
    return load;
}

int RemoveSelectedDriver(DriverRecords& list, std::vector<bool> selected) {
    selected.resize(list.entries.size(), false);
    int removed = 0;
    while (true) {
        size_t k = 0;
        while (k < list.entries.size() && !(selected[k] && !list.entries[k].bold))
            ++k;
        if (k == list.entries.size())
            return removed;
        list.entries.erase(list.entries.begin() + static_cast<std::ptrdiff_t>(k));
        selected.erase(selected.begin() + static_cast<std::ptrdiff_t>(k));
        ++removed;
    }
}

Result<DriverLoad> SaveDrivers(const FileServices& files, std::string_view gameFolder, const DriverRecords& list) {
    const std::string path = playerProfilePath(gameFolder);
    if (list.state == DriverRecords::State::Unread) {
        return refused(QStringLiteral("%1\n\nThis file was not read as a driver file (it is missing, or its first "
                                      "line is not \"103\"), and writing it now could replace something that is "
                                      "not a driver file. Nothing was written.\n\nStart the game once so that it "
                                      "writes player.pro, then read the drivers again.")
                           .arg(fromGameText(path)));
    }
    if (list.state != DriverRecords::State::Read) {
        return refused(QStringLiteral("%1\n\nThe drivers were not read completely from this file, so saving now "
                                      "would lose drivers. Nothing was written.\n\nPut back a good copy of "
                                      "player.pro (the game's \"backup\" folder may hold one from Korvel's first "
                                      "start), then read the drivers again.")
                           .arg(fromGameText(path)));
    }
    // Whether a record has data lines depends on the record before it, so dropping a driver can
    // leave a text that reads back differently; such a file is never written.
    const std::string text = playerProfileText(list);
    const DriverLoad check = parsePlayerProfile(text);
    if (check.list.state != DriverRecords::State::Read || check.list.entries != list.entries) {
        return refused(QStringLiteral("%1\n\nWithout the removed drivers the remaining ones could not be read back "
                                      "from the file. Nothing was written.\n\nRead the drivers again to get the "
                                      "removed ones back, then remove other drivers, or fewer.")
                           .arg(fromGameText(path)));
    }
    if (Result<LoadedFileStamp> written = files.writeChecked(path, text, list.loadedFrom ? &*list.loadedFrom : nullptr);
        !written) {
        Failure failure = written.failure();
        if (failure.kind == FailureKind::ChangedOnDisk)
            return failure;
        failure.message += QStringLiteral("\n\nCheck that player.pro is not read-only and that the game is not "
                                          "running, then save again.");
        return failure;
    }
    return LoadDrivers(files, gameFolder);
}

} // namespace korvel
