#include "listing_export.h"

namespace korvel {

namespace {

constexpr size_t kPrintZone = 14; // the width of a print zone of the old runtime's Print statement

// Appends the items as a comma-separated Print would: each item starts at the next zone boundary.
void printZones(std::string& line, std::initializer_list<std::string_view> items) {
    bool first = true;
    for (std::string_view item : items) {
        if (!first) {
            const size_t next = (line.size() / kPrintZone + 1) * kPrintZone;
            line.append(next - line.size(), ' ');
        }
        line += item;
        first = false;
    }
}

} // namespace

std::string exportPathFor(const std::string& folder, const std::string& fileName) {
    const size_t dot = fileName.find('.');
    return folder + (dot == std::string::npos ? std::string() : fileName.substr(0, dot + 1)) + "txt";
}

std::string listingExportText(const PodDirectory& listing, bool sorted) {
    static const std::string kEnd = "\r\n";
    std::string text = "// " + listing.nameText() + kEnd;
    std::string line, size, start, end;
    for (quint32 row : displayOrder(listing, sorted)) {
        const PodEntry entry = listing.entries[row];
        line.clear();
        size.assign("// ");
        appendWithCommas(size, entry.size);
        start.clear();
        appendWithCommas(start, entry.start);
        end.clear();
        appendWithCommas(end, entry.end);
        printZones(line, {entry.name, size, start, end});
        text += line;
        text += kEnd;
    }
    text += kEnd;
    text += "// Editor Used: " + listing.editorText + kEnd;
    text += "// POD Size: " + listing.sizeText() + kEnd;
    text += "// POD Type: " + listing.typeText + kEnd;
    text += "// Total Files: " + listing.totalText() + kEnd;
    return text;
}

QString exportCreatedText(const QString& exportPath) {
    return exportPath + QStringLiteral(" successfully created!");
}

Result<std::string> exportListing(const FileServices& files, const PodDirectory& listing, bool sorted) {
    if (listing.entries.empty())
        return std::string();
    const std::string path = exportPathFor(listing.folder, listing.fileName);
    if (Status written = files.writeAll(path, listingExportText(listing, sorted)); !written)
        return written.failure();
    return path;
}

} // namespace korvel
