#pragma once

#include "platform/result.h"
#include "settings_store.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// What may be entered into a stored setting. A value is read through a buffer of
// SettingsStore::kValueBuffer characters with its closing NUL; a longer one reads as "Error" and
// is lost at the next start, so such values are refused when the user enters them.

inline constexpr size_t kLongestStoredValue = SettingsStore::kValueBuffer - 1;

// True when a stored `value` reads back as written as far as its length goes.
bool fitsStoredValue(std::string_view value);

// The "ExtraDirs" text for a list of folders: joined by "|", one NUL character for none.
std::string extraDirsValue(const std::vector<std::string>& dirs);

// Adding `folder` to the extra search folders `dirs`. Refused (with the text to show) when the
// folder's path holds "|", which separates the folders, or when the list would grow too long to
// read back.
Status checkExtraDirAddition(const std::vector<std::string>& dirs, const std::string& folder);

// A game profile's name as typed at the name prompt. Refused (with the text to show) when it holds
// "|", which separates the names in the profiles list, ends in "\", which would make its settings
// key unusable, or would make the profiles list `games` too long to read back.
Status checkProfileName(const std::vector<std::string>& games, std::string_view name);

} // namespace korvel
