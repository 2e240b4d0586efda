#pragma once

#include "dialogs.h"
#include "file_services.h"
#include "path_map.h"
#include "registry_service.h"
#include "shell.h"

#include <memory>

namespace korvel {

// What the cores reach the operating system through. The front ends put one together; tests put
// one together from fakes.
struct Services {
    const PathMap& paths;
    FileServices& files;
    RegistryService& registry;
    Dialogs& dialogs;
    Shell& shell;
};

// The registry for this machine: the real one on Windows, unless KORVEL_REGISTRY names a file;
// elsewhere the file-backed store.
std::unique_ptr<RegistryService> createRegistry();

} // namespace korvel
