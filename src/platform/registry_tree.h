#pragma once

#include "registry_service.h"

#include <QByteArray>

#include <map>
#include <string>

namespace korvel {

// An in-memory registry: the data behind the file-backed store, and a store of its own for tests.
class RegistryTree : public RegistryService {
public:
    bool keyExists(RegistryRoot root, const std::string& subkey) override;
    bool createKey(RegistryRoot root, const std::string& subkey) override;
    bool deleteKey(RegistryRoot root, const std::string& subkey) override;
    std::optional<std::string> readValue(RegistryRoot root, const std::string& subkey,
                                         const std::string& name) override;
    bool writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                    const std::string& data) override;

    // A JSON document (bytes kept losslessly as Latin-1 code points).
    QByteArray serialize() const;
    // Replaces the content; false (content unchanged) when the document is not a registry file.
    bool deserialize(const QByteArray& document);
    void clear() { m_keys.clear(); }

protected:
    struct Key {
        std::string path;                                                  // as first created
        std::map<std::string, std::pair<std::string, std::string>> values; // folded name -> (name, data)
    };
    static std::string fullPath(RegistryRoot root, const std::string& subkey);
    static std::string fold(const std::string& text);

    std::map<std::string, Key> m_keys; // folded full path -> key
};

} // namespace korvel
