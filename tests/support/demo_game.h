#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korvel::testing {

// One file of the sample game: its path relative to the game folder ("/" between folders) and
// its bytes.
struct DemoFile {
    std::string path;
    std::string bytes;
};

// The sample installation of the Monster Truck Madness 2 kind that korvel-demo-game writes,
// generated here (nothing is copied from any game): an executable stand-in, stock trucks, tracks of
// every race type in POD1 and POD2 archives, a merged pack, an archive that only the extra search
// folders find, POD.INI with a missing entry, monster.ini, player.pro, language files and a
// palette. The track-information texts hold the race-type marker right before the race-type line
// and the trucks' texts read "version =" and the digit, so that the track tools visibly change them.
std::vector<DemoFile> demoGameFiles();

// A truck's text with the version digit that the compatibility patch replaces.
std::string truckText(const std::string& name, char version);

} // namespace korvel::testing
