#pragma once

#include "platform/dialogs.h"
#include "platform/registry_service.h"

#include <optional>
#include <string>

namespace korvel {

// The program's persistent configuration: string values under the program key, one subkey per
// game profile, and the few other registry places the program touches. Operations never report
// failure: a failed read yields "Error", a failed write simply leaves nothing written.
class SettingsStore {
public:
    SettingsStore(RegistryService& registry, Dialogs& dialogs) : m_registry(registry), m_dialogs(dialogs) {}

    struct KeyPath {
        RegistryRoot root = RegistryRoot::None;
        std::string subkey;
    };

    static RegistryRoot RootFromName(const std::string& name);
    // Splits "ROOT\sub\key"; a malformed path is reported and the previous root stays in force.
    KeyPath ParseKeyPath(const std::string& path);

    // The value's text with leading blanks dropped, "Error" when it cannot be read, and the empty
    // text for an unknown root.
    std::string ReadValue(const std::string& keyPath, const std::string& valueName);
    // Sets a value in an existing key; nothing is written into a key that does not exist.
    void WriteValue(const std::string& keyPath, const std::string& valueName, const std::string& text);
    void CreateKey(const std::string& keyPath);
    // Deletes the subkey of the same relative path beneath the named key: the named key itself
    // stays, with its values. Removing a profile or the association relies on this.
    void DeleteKey(const std::string& keyPath);

    // Conveniences for the program key and the profile subkeys.
    std::string readProgram(std::string_view name);
    void writeProgram(std::string_view name, const std::string& text);
    std::string readProfile(const std::string& profile, std::string_view name);
    void writeProfile(const std::string& profile, std::string_view name, const std::string& text);

    RegistryService& registry() { return m_registry; }

    // Whether the writes since the last call were all saved: the reason of the first one that was
    // not. The desktop follows the classic rule and says nothing; the command line reports it.
    std::optional<QString> takeSaveFailure() { return m_registry.takeSaveFailure(); }

    // Writes made while one of these lives are saved together when it ends (or by finish()):
    // a profile is added whole or not at all.
    class OneSave {
    public:
        explicit OneSave(SettingsStore& store) : m_registry(store.m_registry) { m_registry.beginChanges(); }
        ~OneSave() { finish(); }
        OneSave(const OneSave&) = delete;
        OneSave& operator=(const OneSave&) = delete;
        // Saves now; false when the changes could not be saved.
        bool finish() {
            if (m_done)
                return m_saved;
            m_done = true;
            m_saved = m_registry.endChanges();
            return m_saved;
        }

    private:
        RegistryService& m_registry;
        bool m_done = false;
        bool m_saved = false;
    };

    static constexpr size_t kValueBuffer = 2550;

private:
    RegistryService& m_registry;
    Dialogs& m_dialogs;
    // The root of the latest well-formed path: a malformed path is looked up under it, so that
    // the operation that follows fails at the registry rather than somewhere unexpected.
    RegistryRoot m_lastRoot = RegistryRoot::None;
};

} // namespace korvel
