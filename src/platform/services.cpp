#include "services.h"

#include "file_registry.h"

#ifdef Q_OS_WIN
#include "windows/windows_registry.h"
#endif

namespace korvel {

std::unique_ptr<RegistryService> createRegistry() {
#ifdef Q_OS_WIN
    if (qEnvironmentVariableIsEmpty("KORVEL_REGISTRY"))
        return std::make_unique<WindowsRegistry>();
#endif
    return std::make_unique<FileRegistry>(FileRegistry::defaultPath());
}

} // namespace korvel
