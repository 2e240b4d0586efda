#pragma once

#include <string_view>

namespace korvel {

// The track list written at start-up when none is stored: rows joined by "*", columns by "|"
// (display name, race type, download path relative to the site's root).
inline constexpr std::string_view kDefaultTrackList = "Carnage!|Rumble|vault/tracks/carn.zip*"
                                                      "Damage Inc.|Rumble|vault/tracks/damageX.zip*"
                                                      "Drop Zone!|Rumble|vault/tracks/drop.zip*"
                                                      "EreetLand+|Rumble|vault/tracks/EreetLand.zip*"
                                                      "The Fortress|Rumble|vault/tracks/Fortress.zip*"
                                                      "The Suppository|Rumble|vault/tracks/Suppository.zip";

} // namespace korvel
