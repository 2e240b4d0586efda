#include "version_text.h"

namespace korvel {

ProgramVersion ProgramVersion::current() {
    return {KORVEL_VERSION_MAJOR, KORVEL_VERSION_MINOR, KORVEL_VERSION_PATCH};
}

std::string VersionText(int major, int minor, int revision) {
    std::string minorText = std::to_string(minor);
    if (minorText.size() == 3)
        minorText.erase(0, 1);
    return std::to_string(major) + "." + minorText + " Build " + std::to_string(revision);
}

} // namespace korvel
