// Feeds arbitrary player.pro texts to the driver reader: whatever it reads completely must be
// written back and read again to the same records.
#include "configurator/player_profile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    korvel::DriverLoad load = korvel::parsePlayerProfile(text);
    if (load.list.state != korvel::DriverList::State::Read)
        return 0;
    const korvel::DriverLoad again = korvel::parsePlayerProfile(korvel::playerProfileText(load.list));
    if (again.list.state != korvel::DriverList::State::Read || again.list.entries != load.list.entries)
        std::abort();
    // Remove every other driver; the rest must survive a round trip too.
    std::vector<bool> selected;
    for (size_t i = 0; i < load.list.entries.size(); ++i)
        selected.push_back(i % 2 == 0);
    const int removed = korvel::RemoveSelectedDriver(load.list, selected);
    if (removed != static_cast<int>((selected.size() + 1) / 2))
        std::abort();
    // Dropping a record can change how the next one reads (saving refuses that), but never so that
    // a complete read gives other records.
    const korvel::DriverLoad rest = korvel::parsePlayerProfile(korvel::playerProfileText(load.list));
    if (rest.list.state == korvel::DriverList::State::Read && rest.list.entries != load.list.entries)
        std::abort();
    return 0;
}
