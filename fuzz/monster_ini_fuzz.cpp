// Feeds arbitrary monster.ini texts to the settings editor: loading, then saving every choice.
#include "configurator/monster_ini.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const korvel::Result<korvel::MonsterSettings> loaded = korvel::parseMonsterIni(text);
    if (!loaded.ok())
        return 0;
    if (loaded->localization < 1 || loaded->localization > 4)
        std::abort();
    for (int option = 1; option <= 4; ++option) {
        korvel::MonsterSettings settings = *loaded;
        settings.localization = option;
        settings.hiddenTrack = option % 2 == 0;
        settings.horn = option > 2;
        const korvel::Result<std::string> saved = korvel::applyMonsterSettings(text, settings);
        if (saved.ok())
            (void)korvel::parseMonsterIni(*saved);
    }
    return 0;
}
