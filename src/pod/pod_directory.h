#pragma once

#include "platform/file_services.h"
#include "platform/result.h"

#include <QIODevice>
#include <QString>
#include <QtGlobal>

#include <string>
#include <vector>

namespace korvel {

// One stored file of an archive, as its directory record gives it.
struct PodEntry {
    std::string name; // game text as stored; may hold "\" separators
    qint32 size = 0;
    qint32 start = 0; // byte offset of the data from the start of the archive
    qint32 end = 0;   // start + size
};

// Everything one listing of an archive yields. The Extractor's list, its information boxes, the
// export, extraction and the command line all work from this value; nothing reads the directory twice.
struct PodDirectory {
    std::string folder;   // with its trailing "\"
    std::string fileName; // the archive's file name
    bool pod2 = false;
    std::string magic;   // the first four bytes as read
    std::string comment; // up to its first NUL
    qint64 archiveSize = 0;
    qint32 headerCount = 0;
    std::vector<PodEntry> entries; // directory order
    int trackInfoCount = 0;        // entries ending in ".SIT"
    int truckCount = 0;            // entries ending in ".TRK"
    std::string typeText;          // "Truck", "Rally (POD2)", "Merged", ...
    std::string editorText;        // "TrackEd", "Traxx", "PODMate", "Unknown"

    std::string path() const { return folder + fileName; }
    std::string formatName() const { return pod2 ? "POD2" : "POD1"; }
    // The texts of the information boxes.
    std::string nameText() const { return comment; }
    std::string sizeText() const;
    std::string totalText() const;
};

// The general unexpected-error report for a run-time fault with the old runtime's error number
// (5 invalid argument, 9 subscript, 53 file not found, 63 bad record, 70 permission, 75 access...).
Failure podRuntimeFailure(int number);

// The message for an archive that cannot be read as POD1 or POD2.
QString unreadablePodText();

// Lists the archive at `path` (a game path). Overflowing or impossible directories fail with a
// ReadError carrying unreadablePodText(); other faults with the general unexpected-error report.
Result<PodDirectory> ListPOD(const FileServices& files, const std::string& path);

// The same listing from an open, seekable device holding the archive (named `path`).
Result<PodDirectory> listPodFrom(QIODevice& archive, const std::string& path);

// Classifies a trimmed, upper-cased entry name: 1 for a track-information file, 2 for a truck, 0 else.
int classifyEntryName(const std::string& name);

// Digit grouping with "," and "0" for zero (the program reads its own display back by removing ",").
std::string AddCommas(double value);

// Seconds rounded to two decimals in the ordinary number-to-text form (0.5, 2, 0.27).
QString secondsText(double seconds);

// "Contents of TRUCKS.POD listed in 0.05s"
QString listedStatusText(const PodDirectory& listing, double seconds);

// The rows in the order the list shows them: directory order, or by name when sorted (as Autosort does).
std::vector<const PodEntry*> displayOrder(const PodDirectory& listing, bool sorted);

} // namespace korvel
