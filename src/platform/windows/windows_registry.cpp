#include "windows_registry.h"

#include <windows.h>

#include <vector>

namespace korvel {

namespace {

HKEY handleOf(RegistryRoot root) {
    return reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(root)));
}

} // namespace

bool WindowsRegistry::keyExists(RegistryRoot root, const std::string& subkey) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(handleOf(root), subkey.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

bool WindowsRegistry::createKey(RegistryRoot root, const std::string& subkey) {
    HKEY key = nullptr;
    if (RegCreateKeyA(handleOf(root), subkey.c_str(), &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

bool WindowsRegistry::deleteKey(RegistryRoot root, const std::string& subkey) {
    return RegDeleteKeyA(handleOf(root), subkey.c_str()) == ERROR_SUCCESS;
}

std::optional<std::string> WindowsRegistry::readValue(RegistryRoot root, const std::string& subkey,
                                                      const std::string& name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(handleOf(root), subkey.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return std::nullopt;
    DWORD type = 0;
    DWORD size = 0;
    std::optional<std::string> result;
    if (RegQueryValueExA(key, name.c_str(), nullptr, &type, nullptr, &size) == ERROR_SUCCESS) {
        std::vector<char> buffer(size + 1, '\0');
        if (RegQueryValueExA(key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size) ==
            ERROR_SUCCESS) {
            std::string text(buffer.data(), size);
            if (!text.empty() && text.back() == '\0' && (type == REG_SZ || type == REG_EXPAND_SZ))
                text.pop_back();
            result = text;
        }
    }
    RegCloseKey(key);
    return result;
}

bool WindowsRegistry::writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                                 const std::string& data) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(handleOf(root), subkey.c_str(), 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS)
        return false;
    const LONG status = RegSetValueExA(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(data.data()),
                                       static_cast<DWORD>(data.size()));
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

} // namespace korvel
