#include "game_text.h"

#include "game_codec.h"

#include <cctype>
#include <cstdlib>

namespace korvel {

QString fromGameText(std::string_view bytes) {
    return GameCodec::active().decode(bytes);
}

std::string toGameText(const QString& text) {
    return GameCodec::active().encodeLossy(text);
}

std::optional<std::string> encodeGameText(const QString& text) {
    return GameCodec::active().encode(text);
}

char upperGameChar(char c) {
    return GameCodec::active().upper(c);
}

std::string upperGame(std::string_view text) {
    const GameCodec& codec = GameCodec::active();
    std::string out(text);
    for (size_t i = 0; i < out.size(); ++i) {
        if (codec.isLeadByte(out[i]))
            ++i; // the second byte of a two-byte character is not a letter of its own
        else
            out[i] = codec.upper(out[i]);
    }
    return out;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    const GameCodec& codec = GameCodec::active();
    for (size_t i = 0; i < a.size(); ++i) {
        if (codec.isLeadByte(a[i])) {
            if (a[i] != b[i] || (i + 1 < a.size() && a[i + 1] != b[i + 1]))
                return false;
            ++i;
        } else if (codec.upper(a[i]) != codec.upper(b[i])) {
            return false;
        }
    }
    return true;
}

bool endsWithIgnoreCase(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && equalsIgnoreCase(text.substr(text.size() - suffix.size()), suffix);
}

std::string trimLeadingBlanks(std::string_view text) {
    size_t start = text.find_first_not_of(' ');
    return start == std::string_view::npos ? std::string() : std::string(text.substr(start));
}

std::string trimTrailingBlanks(std::string_view text) {
    size_t end = text.find_last_not_of(' ');
    return end == std::string_view::npos ? std::string() : std::string(text.substr(0, end + 1));
}

std::string trimBlanks(std::string_view text) {
    return trimLeadingBlanks(trimTrailingBlanks(text));
}

std::string replaceAll(std::string_view text, std::string_view what, std::string_view with) {
    if (what.empty())
        return std::string(text);
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (true) {
        size_t hit = text.find(what, pos);
        if (hit == std::string_view::npos)
            break;
        out.append(text.substr(pos, hit - pos));
        out.append(with);
        pos = hit + what.size();
    }
    out.append(text.substr(pos));
    return out;
}

std::vector<std::string> splitText(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    size_t pos = 0;
    while (true) {
        size_t hit = text.find(separator, pos);
        if (hit == std::string_view::npos) {
            pieces.emplace_back(text.substr(pos));
            return pieces;
        }
        pieces.emplace_back(text.substr(pos, hit - pos));
        pos = hit + 1;
    }
}

std::string joinText(const std::vector<std::string>& pieces, char separator) {
    std::string out;
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (i)
            out.push_back(separator);
        out += pieces[i];
    }
    return out;
}

std::optional<double> leadingNumber(std::string_view text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    size_t start = i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        ++i;
    size_t digitsStart = i;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])))
        ++i;
    if (i < text.size() && text[i] == '.') {
        ++i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])))
            ++i;
    }
    if (i == digitsStart || (i == digitsStart + 1 && text[digitsStart] == '.'))
        return std::nullopt;
    std::string number(text.substr(start, i - start));
    return std::strtod(number.c_str(), nullptr);
}

} // namespace korvel
