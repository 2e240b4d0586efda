#pragma once

#include "file_services.h"

#include <string>

namespace korvel {

// The short (8.3) form of a game path, as the mounted list stores it.
//
// With wholePath false only the folder part is shortened and the file name is kept as written.
// A relative path is taken relative to the game folder (`shortGameFolder`, its short form with a
// trailing "\") and comes back relative. Where no short form can be had (the folder does not
// exist, or its short form would not fit the 66 characters the game's buffer holds), the long
// folder part is kept rather than lost.
std::string ShortPath(const FileServices& files, const std::string& shortGameFolder, const std::string& path,
                      bool wholePath);

} // namespace korvel
