#pragma once

#include "platform/result.h"

#include <string>

namespace korvel::ui {

// What the main window asks of its panes and of the subsystems behind its menus. The window keeps
// no domain rules of its own: the Mounter, Extractor and Configurator panes (and the start-up
// wiring) implement the parts they own. Every default does nothing, so the window works without
// them.
class WindowHooks {
public:
    virtual ~WindowHooks() = default;

    // Opening the window, in the order the window calls them.
    virtual void startBrowsingAtGameFolder() {} // the Extractor's drive and folder lists
    virtual void prepareMenuCaptions() {}       // captions the panes extend beyond the shortcut texts
    virtual void prepareExtractionProgress() {} // the extraction progress bar's range
    virtual void loadGameLists() {}             // player profile, mounted list, unmounted list
    virtual void loadConfiguratorSettings() {}  // monster.ini, then the track list (Configurator only)
    virtual void restoreSplitter(double sliderTop) { (void)sliderTop; }

    // Extractor: list an archive (folder ends in "\"), and the folder + file name listed now.
    virtual void listArchive(const std::string& folder, const std::string& file) {
        (void)folder;
        (void)file;
    }
    virtual std::string listedArchive() const { return {}; }
    // True while an archive is being listed or extracted; the window then refuses to close.
    virtual bool archiveBusy() const { return false; }

    // Mounter: whether the mounted list differs from POD.INI, and writing it.
    virtual bool mountedListChanged() const { return false; }
    virtual Status saveMountedList() { return {}; }
    // The step that writes the mounted list only when it has changed.
    virtual Status saveMountedListIfChanged() { return mountedListChanged() ? saveMountedList() : Status{}; }

    // Menu commands owned elsewhere.
    virtual void switchGame() {}
    virtual void applyAssociation(bool associate) { (void)associate; }
    virtual void showPaletteViewer() {}
    virtual void massExtract() {}
    virtual void updateTrackList() {}
    virtual void fixRegistry() {}
};

} // namespace korvel::ui
