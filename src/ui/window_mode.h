#pragma once

#include <QString>

#include <optional>

namespace korvel::ui {

// The main window's three modes, one pane each.
enum class Mode { Configurator, Extractor, Mounter };

inline QString modeName(Mode mode) {
    switch (mode) {
    case Mode::Configurator:
        return QStringLiteral("Configurator");
    case Mode::Extractor:
        return QStringLiteral("Extractor");
    case Mode::Mounter:
        break;
    }
    return QStringLiteral("Mounter");
}

// The mode a remembered "Screen" letter names ("C", "E", "M"); nullopt for anything else.
inline std::optional<Mode> modeFromLetter(const QString& letter) {
    if (letter == QLatin1String("C"))
        return Mode::Configurator;
    if (letter == QLatin1String("E"))
        return Mode::Extractor;
    if (letter == QLatin1String("M"))
        return Mode::Mounter;
    return std::nullopt;
}

} // namespace korvel::ui
