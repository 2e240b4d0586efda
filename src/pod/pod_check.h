#pragma once

#include "platform/file_services.h"

#include <QString>

#include <string>
#include <vector>

namespace korvel {

// What is wrong with an archive, one kind per finding.
enum class CheckProblem {
    NotFound,      // no file at the path
    Damaged,       // the listing failed; the text is the listing's error
    Truncated,     // an entry ends past the end of the file
    Pod3,          // a POD3 archive, which Korvel does not read
    UnsafeNames,   // entry names that extraction refuses to write
    WrongChecksum, // POD2: the header's or an entry's checksum does not match
};

struct CheckFinding {
    CheckProblem problem;
    QString text; // "Not found", the listing's error, "Truncated: ...", ...
};

struct ArchiveCheck {
    std::string path; // the game path checked
    std::vector<CheckFinding> findings;

    bool fine() const { return findings.empty(); }
    // "Fine", or the findings' texts joined by "; ".
    QString summary() const;
};

// "fine", "not-found", "damaged", "truncated", "pod3", "unsafe-names", "wrong-checksum".
QString checkProblemKey(CheckProblem problem);
QString notFoundText(); // "Not found"

// Checks the archive at `path`: lists it, then looks at every entry's extent and name and, for POD2,
// at the header checksum and every entry's checksum (reading the whole file). A missing file, a
// POD3 archive and a failed listing are reported alone; the other findings can come together.
ArchiveCheck checkArchive(const FileServices& files, const std::string& path);

} // namespace korvel
