#pragma once

#include "platform/file_services.h"
#include "platform/result.h"
#include "pod/format/pod_format.h"

#include <QIODevice>
#include <QString>
#include <QtGlobal>

#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// The name the rest of the program knows a listing by.
using PodListing = PodDirectory;

// The general unexpected-error report for a run-time fault with the old runtime's error number
// (5 invalid argument, 9 subscript, 53 file not found, 63 bad record, 70 permission, 75 access...).
Failure podRuntimeFailure(int number);

// The message for an archive that cannot be read as POD1 or POD2.
QString unreadablePodText();
// "This POD lists 107,374,182 files, more than Korvel can show."
QString tooManyEntriesText(qint64 count);

// Lists the archive at `path` (a game path). Overflowing or impossible directories fail with a
// ReadError carrying unreadablePodText(); more than kMaxPodEntries entries with a ReadError carrying
// tooManyEntriesText(); other faults with the general unexpected-error report.
Result<PodDirectory> ListPOD(const FileServices& files, const std::string& path);

// The same listing from an open, seekable device holding the archive (named `path`).
Result<PodDirectory> listPodFrom(QIODevice& archive, const std::string& path);

// Digit grouping with "," and "0" for zero (the program reads its own display back by removing ",").
std::string AddCommas(double value);

// Seconds rounded to two decimals in the ordinary number-to-text form (0.5, 2, 0.27).
QString secondsText(double seconds);

// "Contents of TRUCKS.POD listed in 0.05s"
QString listedStatusText(const PodDirectory& listing, double seconds);

// The row indices in the order the list shows them: directory order, or by name ignoring case
// (ties in directory order) when sorted, as Autosort does, with the active code page's upper-casing.
std::vector<quint32> displayOrder(const PodDirectory& listing, bool sorted);

} // namespace korvel
