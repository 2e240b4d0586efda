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
    if (load.list.state != korvel::DriverRecords::State::Read)
        return 0;
    const korvel::DriverLoad again = korvel::parsePlayerProfile(korvel::playerProfileText(load.list));
    if (again.list.state != korvel::DriverRecords::State::Read || again.list.entries != load.list.entries)
        std::abort();
    // Removing drivers may change how the records after them read (saving refuses that), so only
    // the count of removed entries is checked here.
    std::vector<bool> selected;
    for (size_t i = 0; i < load.list.entries.size(); ++i)
        selected.push_back(i % 2 == 0);
    if (korvel::RemoveSelectedDriver(load.list, selected) != static_cast<int>((selected.size() + 1) / 2))
        std::abort();
    return 0;
}
