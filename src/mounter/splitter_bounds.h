#pragma once

namespace korvel {

// The Mounter's splitter bar between the two lists; positions in twips.
inline constexpr int kSplitterDefaultTop = 3070;
inline constexpr int kSplitterLowestTop = 780;
inline constexpr int kSplitterHighestTop = 5370;

// The bar's top while it is dragged: pointer y − half the bar's height + the bar's top, kept
// between 780 and 5370 (a result below 770 goes to 780, one above 5380 to 5370).
int splitterDragTop(int pointerY, int barHeight, int barTop);
// The bar's top when the button is released: the right button puts it back at the default.
int splitterReleaseTop(int barTop, bool rightButton);

struct MounterSplit {
    int mountedHeight;
    int unmountedTop;
    int unmountedHeight;
};
// The two lists around the bar; `paneHeight` is the Mounter pane's inner height (the status bar's top).
MounterSplit mounterSplit(int barTop, int barHeight, int paneHeight);

} // namespace korvel
