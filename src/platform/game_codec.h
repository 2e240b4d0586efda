#pragma once

#include "result.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// The code page the game reads and writes its text in: POD.INI, monster.ini, player.pro, archive
// entry names, registry values. On Windows it is the system's ANSI code page; under Wine the
// prefix's; a profile may name its own.
//
// One codec is active for the whole program at a time (the loaded profile's); the text helpers of
// game_text.h convert through it.
class GameCodec {
public:
    GameCodec(); // Windows-1252

    // The codec of a Windows code page number (1250..1258, 874, 932, 936, 949, 950, 65001);
    // nullopt for a code page this build cannot convert.
    static std::optional<GameCodec> forCodePage(int codePage);
    // The codec a user names: "1251", "cp1251", "windows-1251", "CP932", "Shift_JIS".
    static std::optional<GameCodec> fromText(const QString& text);

    int codePage() const { return m_codePage; }
    // "windows-1251", "Shift_JIS": the name shown to the user.
    QString name() const;

    QString decode(std::string_view bytes) const;
    // The bytes of the text; nullopt when the code page has no character for one of its letters.
    std::optional<std::string> encode(const QString& text) const;
    // The bytes of the text with "?" for every letter the code page cannot hold. For display and
    // look-ups only; never for text that is written.
    std::string encodeLossy(const QString& text) const;

    // Upper-casing as the code page does it, byte by byte (for a double-byte code page only the
    // single-byte letters change).
    char upper(char c) const { return m_upper[static_cast<unsigned char>(c)]; }
    // True for the first byte of a two-byte character (double-byte code pages only).
    bool isLeadByte(char c) const { return m_lead[static_cast<unsigned char>(c)]; }

    static const GameCodec& active();
    static void setActive(const GameCodec& codec);

private:
    explicit GameCodec(int codePage, QByteArray converterName);
    void buildTables();

    int m_codePage = 1252;
    QByteArray m_converterName; // empty for Windows-1252, which is converted by table
    std::array<char, 256> m_upper{};
    std::array<bool, 256> m_lead{};
};

// Makes a codec the active one for as long as it lives, then restores the one before.
class ScopedGameCodec {
public:
    explicit ScopedGameCodec(const GameCodec& codec) : m_previous(GameCodec::active()) { GameCodec::setActive(codec); }
    ~ScopedGameCodec() { GameCodec::setActive(m_previous); }
    ScopedGameCodec(const ScopedGameCodec&) = delete;
    ScopedGameCodec& operator=(const ScopedGameCodec&) = delete;

private:
    GameCodec m_previous;
};

// The ANSI code page of a locale name as the environment gives it ("ru_RU.UTF-8" -> 1251), the way
// Wine picks one for a new prefix; nullopt for an empty name or "C"/"POSIX".
std::optional<int> localeCodePage(const QString& localeName);

// The `ACP` value under HKLM\System\CurrentControlSet\Control\Nls\CodePage in a Wine prefix's
// system.reg; nullopt when the file or the value is missing.
std::optional<int> winePrefixCodePage(const QString& prefix);

// Where the code page was found, for the user.
struct CodePageChoice {
    GameCodec codec;
    QString source; // "--codepage", "KORVEL_CODEPAGE", "the profile", "the Wine prefix", ...
};

// The game's codec: the first of `explicitChoice` (a command-line option), $KORVEL_CODEPAGE, the
// profile's setting, then the system (GetACP on Windows; elsewhere the Wine prefix's code page,
// then the locale's, then 1252). A named code page this build cannot convert is refused.
Result<CodePageChoice> chooseGameCodec(const QString& explicitChoice, const QString& profileSetting,
                                       const QString& winePrefix);

// The system's choice alone: GetACP on Windows; elsewhere the Wine prefix's code page, then the
// locale's, then 1252.
CodePageChoice systemGameCodec(const QString& winePrefix);

// The message for a name the game's code page cannot hold.
QString unrepresentableMessage(const QString& name);

} // namespace korvel
