#include "settings_store.h"

#include "platform/game_text.h"
#include "settings_names.h"

namespace korvel {

RegistryRoot SettingsStore::RootFromName(const std::string& name) {
    static const std::pair<const char*, RegistryRoot> kRoots[] = {
        {"HKEY_CLASSES_ROOT", RegistryRoot::ClassesRoot},
        {"HKEY_CURRENT_USER", RegistryRoot::CurrentUser},
        {"HKEY_LOCAL_MACHINE", RegistryRoot::LocalMachine},
        {"HKEY_USERS", RegistryRoot::Users},
        {"HKEY_PERFORMANCE_DATA", RegistryRoot::PerformanceData},
        {"HKEY_CURRENT_CONFIG", RegistryRoot::CurrentConfig},
        {"HKEY_DYN_DATA", RegistryRoot::DynData},
    };
    for (const auto& [text, root] : kRoots) {
        if (name == text)
            return root;
    }
    return RegistryRoot::None;
}

SettingsStore::KeyPath SettingsStore::ParseKeyPath(const std::string& path) {
    const size_t slash = path.find('\\');
    if (path.compare(0, 5, "HKEY_") != 0 || (!path.empty() && path.back() == '\\') || path.size() < 5) {
        m_dialogs.message(programTitle(), QStringLiteral("Incorrect Format:\n\n") + fromGameText(path),
                          MessageIcon::None, MessageButtons::Ok);
        return {m_lastRoot, path};
    }
    KeyPath parsed;
    if (slash != std::string::npos) {
        parsed.root = RootFromName(path.substr(0, slash));
        parsed.subkey = path.substr(slash + 1);
    } else {
        parsed.root = RootFromName(path);
    }
    m_lastRoot = parsed.root;
    return parsed;
}

std::string SettingsStore::ReadValue(const std::string& keyPath, const std::string& valueName) {
    const KeyPath key = ParseKeyPath(keyPath);
    if (key.root == RegistryRoot::None)
        return std::string();
    if (!m_registry.keyExists(key.root, key.subkey))
        return std::string(settings::kError);
    const std::optional<std::string> value = m_registry.readValue(key.root, key.subkey, valueName);
    // The value must fit a buffer of kValueBuffer characters with its terminating NUL.
    if (!value || value->size() + 1 > kValueBuffer)
        return std::string(settings::kError);
    std::string text = trimLeadingBlanks(*value);
    const size_t nul = text.find('\0');
    if (nul != std::string::npos)
        text.resize(nul);
    return text;
}

void SettingsStore::WriteValue(const std::string& keyPath, const std::string& valueName, const std::string& text) {
    const KeyPath key = ParseKeyPath(keyPath);
    if (key.root == RegistryRoot::None)
        return;
    m_registry.writeValue(key.root, key.subkey, valueName, text);
}

void SettingsStore::CreateKey(const std::string& keyPath) {
    const KeyPath key = ParseKeyPath(keyPath);
    if (key.root == RegistryRoot::None)
        return;
    m_registry.createKey(key.root, key.subkey);
}

void SettingsStore::DeleteKey(const std::string& keyPath) {
    const KeyPath key = ParseKeyPath(keyPath);
    if (key.root == RegistryRoot::None || !m_registry.keyExists(key.root, key.subkey))
        return;
    // The subkey of the same relative path beneath the opened key: normally absent.
    const std::string nested = key.subkey.empty() ? key.subkey : key.subkey + "\\" + key.subkey;
    if (!key.subkey.empty())
        m_registry.deleteKey(key.root, nested);
}

std::string SettingsStore::readProgram(std::string_view name) {
    return ReadValue(std::string(settings::kProgramKey), std::string(name));
}

void SettingsStore::writeProgram(std::string_view name, const std::string& text) {
    WriteValue(std::string(settings::kProgramKey), std::string(name), text);
}

std::string SettingsStore::readProfile(const std::string& profile, std::string_view name) {
    return ReadValue(settings::profileKey(profile), std::string(name));
}

void SettingsStore::writeProfile(const std::string& profile, std::string_view name, const std::string& text) {
    WriteValue(settings::profileKey(profile), std::string(name), text);
}

} // namespace korvel
