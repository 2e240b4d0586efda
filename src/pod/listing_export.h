#pragma once

#include "pod_directory.h"

#include "platform/file_services.h"
#include "platform/result.h"

#include <QString>

#include <string>

namespace korvel {

// Where the export of an archive goes: its folder + its name up to and including the first "." +
// "txt" (C:\GAME\TRUCKS.POD -> C:\GAME\TRUCKS.txt; A.B.POD -> A.txt; a name without "." -> folder + "txt").
std::string exportPathFor(const std::string& folder, const std::string& fileName);

// The export text: the comment line, one line per row in the given order, a blank line and the four
// information lines, every line ended by CR LF. Game text, as the archive stores it.
std::string listingExportText(const PodDirectory& listing, bool sorted);

// "C:\GAME\TRUCKS.txt successfully created!"
QString exportCreatedText(const QString& exportPath);

// Writes the export of `listing` next to its archive (atomically) and returns the export's game
// path. A listing without rows writes nothing and returns an empty path.
Result<std::string> exportListing(const FileServices& files, const PodDirectory& listing, bool sorted);

} // namespace korvel
