#pragma once

#include <string>

namespace korvel {

// The program's version record.
struct ProgramVersion {
    int major = 0;
    int minor = 0;
    int revision = 0;

    // The version the program was built as.
    static ProgramVersion current();
};

// major & "." & minor & " Build " & revision, where a minor number of exactly three decimal digits
// keeps only its last two ("1.05 Build 12" for 1, 105, 12).
std::string VersionText(int major, int minor, int revision);
inline std::string VersionText(const ProgramVersion& v) {
    return VersionText(v.major, v.minor, v.revision);
}

} // namespace korvel
