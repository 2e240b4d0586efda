#pragma once

#include <QString>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// Game-side text (archive names, POD.INI, monster.ini, player.pro, registry values) is kept as the
// bytes the game wrote, in its code page (the active GameCodec). These convert it only at the
// edges: to show it, or to name a host file.
QString fromGameText(std::string_view bytes);
// "?" stands for every letter the code page cannot hold: for look-ups and messages only.
std::string toGameText(const QString& text);
// The exact bytes of the text; nullopt when the code page cannot hold one of its letters. Text that
// is written for the game goes through this.
std::optional<std::string> encodeGameText(const QString& text);

// Upper-casing as the game's code page does it (ASCII and the code page's own letters).
std::string upperGame(std::string_view text);
char upperGameChar(char c);
bool equalsIgnoreCase(std::string_view a, std::string_view b);
bool endsWithIgnoreCase(std::string_view text, std::string_view suffix);

// Blanks are the space character only, as the old string functions define them.
std::string trimBlanks(std::string_view text);
std::string trimLeadingBlanks(std::string_view text);
std::string trimTrailingBlanks(std::string_view text);

// Replaces every occurrence of `what` (exact, case-sensitive); an empty `what` changes nothing.
std::string replaceAll(std::string_view text, std::string_view what, std::string_view with);

// Splits at every separator; an empty text gives one empty piece.
std::vector<std::string> splitText(std::string_view text, char separator);
std::string joinText(const std::vector<std::string>& pieces, char separator);

// Leading-number conversion of the old runtime: optional blanks, sign and digits; anything else
// ends the number. Returns nullopt when the text does not start with a number.
std::optional<double> leadingNumber(std::string_view text);

} // namespace korvel
