#pragma once

#include "window_hooks.h"

#include <vector>

namespace korvel::ui {

// The window's hooks answered by several parts at once: each pane implements the hooks it owns
// (a WindowHooks subclass overriding only those), and this forwards every call to all of them.
// Questions are answered by the first part that says yes; saves stop at the first failure.
class CompositeHooks : public WindowHooks {
public:
    void add(WindowHooks* part) { m_parts.push_back(part); }

    void startBrowsingAtGameFolder() override {
        each([](WindowHooks& h) { h.startBrowsingAtGameFolder(); });
    }
    void prepareMenuCaptions() override {
        each([](WindowHooks& h) { h.prepareMenuCaptions(); });
    }
    void prepareExtractionProgress() override {
        each([](WindowHooks& h) { h.prepareExtractionProgress(); });
    }
    void loadGameLists() override {
        each([](WindowHooks& h) { h.loadGameLists(); });
    }
    void loadConfiguratorSettings() override {
        each([](WindowHooks& h) { h.loadConfiguratorSettings(); });
    }
    void restoreSplitter(double top) override {
        each([top](WindowHooks& h) { h.restoreSplitter(top); });
    }
    void listArchive(const std::string& folder, const std::string& file) override {
        each([&](WindowHooks& h) { h.listArchive(folder, file); });
    }
    std::string listedArchive() const override {
        for (WindowHooks* part : m_parts) {
            if (std::string listed = part->listedArchive(); !listed.empty())
                return listed;
        }
        return {};
    }
    bool archiveBusy() const override {
        return any([](const WindowHooks& h) { return h.archiveBusy(); });
    }
    bool mountedListChanged() const override {
        return any([](const WindowHooks& h) { return h.mountedListChanged(); });
    }
    Status saveMountedList() override {
        for (WindowHooks* part : m_parts) {
            if (Status status = part->saveMountedList(); !status)
                return status;
        }
        return {};
    }
    Status saveMountedListIfChanged() override {
        for (WindowHooks* part : m_parts) {
            if (Status status = part->saveMountedListIfChanged(); !status)
                return status;
        }
        return {};
    }
    void switchGame() override {
        each([](WindowHooks& h) { h.switchGame(); });
    }
    void applyAssociation(bool associate) override {
        each([=](WindowHooks& h) { h.applyAssociation(associate); });
    }
    void showPaletteViewer() override {
        each([](WindowHooks& h) { h.showPaletteViewer(); });
    }
    void massExtract() override {
        each([](WindowHooks& h) { h.massExtract(); });
    }
    void updateTrackList() override {
        each([](WindowHooks& h) { h.updateTrackList(); });
    }
    void fixRegistry() override {
        each([](WindowHooks& h) { h.fixRegistry(); });
    }

private:
    template <typename F> void each(F&& call) {
        for (WindowHooks* part : m_parts)
            call(*part);
    }
    template <typename F> bool any(F&& ask) const {
        for (const WindowHooks* part : m_parts) {
            if (ask(*part))
                return true;
        }
        return false;
    }

    std::vector<WindowHooks*> m_parts;
};

} // namespace korvel::ui
