#pragma once

#include "platform/loaded_file_stamp.h"
#include "platform/result.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

class FileServices;

// One driver of player.pro: the name shown in the list and the whole record, each line followed
// by "\r\n", name line included. Records are copied, never edited.
struct DriverEntry {
    std::string name;
    std::string record;
    // Bold entries are never removed. Nothing in the program makes an entry bold.
    bool bold = false;

    // The same driver as stored: name and record (boldness is only how the list shows it).
    bool operator==(const DriverEntry& other) const { return name == other.name && record == other.record; }
};

// The drivers read from player.pro, in file order.
struct DriverRecords {
    enum class State {
        Unread,  // never read, or the file does not start with the mark: nothing was loaded
        Read,    // every record the count announces was read
        Damaged, // the file ended inside a record (or its count is not a number): the entries
                 // hold the complete records before that point
    };
    State state = State::Unread;
    std::vector<DriverEntry> entries;
    // What player.pro held when LoadDrivers read these entries: SaveDrivers writes only over that.
    // A list made otherwise has none and is written over whatever the file holds.
    std::optional<LoadedFileStamp> loadedFrom;

    int count() const { return static_cast<int>(entries.size()); }
};

struct DriverLoad {
    DriverRecords list;
    std::optional<Failure> failure; // why the list is not Read; none for a file without the mark
};

inline constexpr std::string_view kPlayerProfileMark = "103";

// Game folder + "\player.pro".
std::string playerProfilePath(std::string_view gameFolder);

// Reads the records of a player.pro text.
DriverLoad parsePlayerProfile(std::string_view text);
// The file text for the list: "103", the count, "1", then every record, each line ending in
// "\r\n" and nothing after the last record.
std::string playerProfileText(const DriverRecords& list);

// Reads the game's player.pro.
DriverLoad LoadDrivers(const FileServices& files, std::string_view gameFolder);

// Removes every selected entry that is not bold (`selected` runs parallel to the entries; missing
// flags count as unselected) and returns how many went. The walk restarts from the first entry
// after each removal, as the list is renumbered.
int RemoveSelectedDriver(DriverRecords& list, std::vector<bool> selected);

// Writes the list to the game's player.pro (atomically) and reads it back. Refused unless the list
// was read completely from the file, so a save never drops drivers the program could not read, and
// refused when the text would not read back as the same records (a record without data lines
// that would follow one whose last line no longer ends in ".TRK"), and refused (ChangedOnDisk) when
// the file no longer holds what the list was loaded from. Every refusal and failure says why and
// what the user can do about it.
Result<DriverLoad> SaveDrivers(const FileServices& files, std::string_view gameFolder, const DriverRecords& list);

} // namespace korvel
