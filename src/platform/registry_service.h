#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <string>

namespace korvel {

// The predefined roots, by the handles the Windows registry gives them.
enum class RegistryRoot : std::uint32_t {
    None = 0,
    ClassesRoot = 0x80000000u,
    CurrentUser = 0x80000001u,
    LocalMachine = 0x80000002u,
    Users = 0x80000003u,
    PerformanceData = 0x80000004u,
    CurrentConfig = 0x80000005u,
    DynData = 0x80000006u,
};

// The registry operations the program needs. Key and value names are game-side text (bytes);
// names compare without regard to case, as the Windows registry does. Values are strings of any
// bytes, NUL included.
class RegistryService {
public:
    virtual ~RegistryService() = default;

    virtual bool keyExists(RegistryRoot root, const std::string& subkey) = 0;
    // Creates the key and any missing parents; an existing key is left as it is.
    virtual bool createKey(RegistryRoot root, const std::string& subkey) = 0;
    // Removes a key that has no subkeys; false when it is missing or still has subkeys.
    virtual bool deleteKey(RegistryRoot root, const std::string& subkey) = 0;
    virtual std::optional<std::string> readValue(RegistryRoot root, const std::string& subkey,
                                                 const std::string& name) = 0;
    // Sets a value in an existing key; false (nothing written) when the key does not exist.
    virtual bool writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                            const std::string& data) = 0;

    // Problems met that the user should hear about once (a damaged settings file kept aside...).
    virtual QStringList takeWarnings() { return {}; }

    // The reason the first change since the last call could not be saved (a full disk, a file or
    // folder that cannot be written, a lock held by another program); nullopt when every change
    // was saved.
    virtual std::optional<QString> takeSaveFailure() { return std::nullopt; }

    // Changes made between these two calls are saved together, or not at all. Calls nest; the
    // outermost end saves. endChanges() is false when the changes could not be saved.
    virtual void beginChanges() {}
    virtual bool endChanges() { return true; }
};

QString rootName(RegistryRoot root);

} // namespace korvel
