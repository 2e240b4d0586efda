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

// What a mode is for, with the key that chooses it: the tooltip of its panel and its View entry.
inline QString modeToolTip(Mode mode) {
    switch (mode) {
    case Mode::Configurator:
        return QStringLiteral("Configurator: the game's settings, drivers and tracks (Ctrl+1)");
    case Mode::Extractor:
        return QStringLiteral("Extractor: look inside a POD and extract its files (Ctrl+2)");
    case Mode::Mounter:
        break;
    }
    return QStringLiteral("Mounter: choose the PODs the game loads (Ctrl+3)");
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
