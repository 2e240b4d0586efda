#pragma once

#include "../registry_service.h"

namespace korvel {

// The Windows registry itself, through the ANSI registry calls.
class WindowsRegistry : public RegistryService {
public:
    bool keyExists(RegistryRoot root, const std::string& subkey) override;
    bool createKey(RegistryRoot root, const std::string& subkey) override;
    bool deleteKey(RegistryRoot root, const std::string& subkey) override;
    std::optional<std::string> readValue(RegistryRoot root, const std::string& subkey,
                                         const std::string& name) override;
    bool writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                    const std::string& data) override;
};

} // namespace korvel
