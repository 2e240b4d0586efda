// The settings file reader: any bytes either load as a registry or are refused with the old
// content kept, and whatever loads saves and loads back to the same registry.
#include "platform/registry_tree.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray document(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));

    korvel::RegistryTree tree;
    tree.createKey(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel");
    tree.writeValue(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel", "Associate", "1");
    const QByteArray before = tree.serialize();
    if (!tree.deserialize(document)) {
        if (tree.serialize() != before)
            std::abort(); // a refused document must leave the content alone
        return 0;
    }

    // Exercise the loaded content the way the store does.
    tree.readValue(korvel::RegistryRoot::CurrentUser, "Software\\Dunmere\\Korvel", "InstalledGames");
    tree.keyExists(korvel::RegistryRoot::ClassesRoot, ".pod");

    const QByteArray saved = tree.serialize();
    korvel::RegistryTree again;
    if (!again.deserialize(saved) || again.serialize() != saved)
        std::abort();
    return 0;
}
