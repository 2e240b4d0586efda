#include "splitter_bounds.h"

#include <algorithm>

namespace korvel {

int splitterDragTop(int pointerY, int barHeight, int barTop) {
    const int top = pointerY - barHeight / 2 + barTop;
    if (top < 770)
        return kSplitterLowestTop;
    if (top > 5380)
        return kSplitterHighestTop;
    return top;
}

int splitterReleaseTop(int barTop, bool rightButton) {
    return rightButton ? kSplitterDefaultTop : barTop;
}

MounterSplit mounterSplit(int barTop, int barHeight, int paneHeight) {
    MounterSplit split;
    split.mountedHeight = std::max(0, barTop - 180);
    split.unmountedTop = barTop + barHeight - 10;
    split.unmountedHeight = std::max(0, paneHeight - 225 - split.unmountedTop);
    return split;
}

} // namespace korvel
