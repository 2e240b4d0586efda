#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// The relative game path ("DATA\SUB\X.BIN") under which an entry is written beneath the extraction
// folder: the name cut at 80 characters, blanks trimmed at both ends, "\" and "/" both taken as
// separators. nullopt when the name would leave the folder or names no file: empty, rooted ("\x",
// "/x", UNC), carrying a drive letter or any ":", an empty component, or a component of dots only
// ("..", "...", which Windows folds into a parent reference). Every write of an entry goes through this.
std::optional<std::string> entryRelativePath(std::string_view name);

} // namespace korvel
