#pragma once

#include "pod_directory.h"

#include "platform/file_services.h"
#include "platform/result.h"

#include <QString>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// How extracted files reach the disk.
struct ExtractOptions {
    // false (the desktop's Extract): a missing folder is made with one single-level make-directory
    // call when a listing of it finds no ordinary file; true: missing folders are made, parents too.
    bool createParents = false;
    // false: an existing file is written over in place and keeps any tail beyond the new data;
    // true: each file is written to a temporary file and replaces the old one whole.
    bool replaceWhole = false;
};

// Called before each entry with the number of entries done so far, and once at the end with
// done == total and an empty name.
using ExtractProgress = std::function<void(int done, int total, std::string_view name)>;

struct ExtractSummary {
    int files = 0;    // files the run left on disk: entries less those written over
    qint64 bytes = 0; // bytes of every entry extracted
    double seconds = 0;
    int overwritten = 0; // entries whose file a later entry of the run wrote over (names equal but for case)
};

QString corruptPodText();   // "This POD appears to be corrupt!"
QString fileNotFoundText(); // "File not found!"
// "Extracting TRUCK.BIN.." for the status line while an entry is copied.
QString extractingText(std::string_view name);
// "3 files (12,345 bytes) extracted in 0.27s!", followed by " 1 file written over by a later entry."
// when entries shared a name.
QString extractedSummaryText(const ExtractSummary& summary);
// "ART\X.RAW was not extracted: /dest/art is a link, and Korvel never writes through links."
QString linkRefusedText(std::string_view entryName, const QString& hostPath);

// Copies the entries `rows` (indices into listing.entries, in list order) of the listed archive into
// `destination` (a game folder, with or without its trailing "\"), each at its name taken as a path
// beneath it. A row whose start or end lies beyond the archive, or whose name would leave the
// destination, stops the run with a ReadError carrying corruptPodText(); rows before it are written.
// Beneath the destination no link is ever followed: a folder or file that is a link (matched without
// regard to case, as every name is) stops the run with a WriteError carrying linkRefusedText().
Result<ExtractSummary> ExtractFiles(const FileServices& files, const PodDirectory& listing,
                                    const std::vector<size_t>& rows, const std::string& destination,
                                    const ExtractOptions& options = {}, const ExtractProgress& progress = {});

// The indices of every row, in directory order.
std::vector<size_t> allRows(const PodDirectory& listing);

struct MassExtractHooks {
    // After each archive is listed (successfully or not). A failed listing skips that archive, and
    // so does a listed one for which this answers false.
    std::function<bool(const std::string& archivePath, const Result<PodDirectory>& listing)> listed;
    // Just before a listed archive is extracted: the rows to extract, in order. Without it every
    // row is extracted in directory order.
    std::function<std::vector<size_t>(const PodDirectory& listing)> rows;
    ExtractProgress progress;
    std::function<void(const ExtractSummary& summary)> extracted;
};

// Lists and extracts each of `archiveNames` (names in `gameFolder`, as the file box shows them) into
// the game folder itself, in turn. A name that a listing of the folder no longer yields stops the
// run with a ReadError carrying fileNotFoundText(); an extraction failure stops it with its failure.
Status MassExtract(const FileServices& files, const std::string& gameFolder,
                   const std::vector<std::string>& archiveNames, const ExtractOptions& options = {},
                   const MassExtractHooks& hooks = {});

} // namespace korvel
