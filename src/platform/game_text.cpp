#include "game_text.h"

#include <array>
#include <cctype>
#include <cstdlib>

namespace korvel {

namespace {

// Windows-1252 bytes 0x80..0x9F; the five undefined bytes map to the C1 controls, as Windows does.
constexpr std::array<char16_t, 32> kHighTable = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char encodeOne(char16_t u) {
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return static_cast<char>(u);
    for (size_t i = 0; i < kHighTable.size(); ++i) {
        if (kHighTable[i] == u)
            return static_cast<char>(0x80 + i);
    }
    return '?';
}

} // namespace

QString fromGameText(std::string_view bytes) {
    QString out;
    out.resize(static_cast<qsizetype>(bytes.size()));
    QChar* data = out.data();
    for (size_t i = 0; i < bytes.size(); ++i) {
        auto b = static_cast<unsigned char>(bytes[i]);
        data[i] = (b >= 0x80 && b < 0xA0) ? QChar(kHighTable[b - 0x80]) : QChar(b);
    }
    return out;
}

std::string toGameText(const QString& text) {
    std::string out;
    out.reserve(static_cast<size_t>(text.size()));
    for (QChar c : text)
        out.push_back(encodeOne(c.unicode()));
    return out;
}

char upperGameChar(char c) {
    auto b = static_cast<unsigned char>(c);
    if (b >= 'a' && b <= 'z')
        return static_cast<char>(b - 32);
    if (b >= 0xE0 && b <= 0xFE && b != 0xF7)
        return static_cast<char>(b - 32);
    switch (b) {
    case 0x9A:
        return static_cast<char>(0x8A); // s caron
    case 0x9C:
        return static_cast<char>(0x8C); // oe
    case 0x9E:
        return static_cast<char>(0x8E); // z caron
    case 0xFF:
        return static_cast<char>(0x9F); // y diaeresis
    default:
        return c;
    }
}

std::string upperGame(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = upperGameChar(c);
    return out;
}

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (upperGameChar(a[i]) != upperGameChar(b[i]))
            return false;
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

std::string trimBlanks(std::string_view text) { return trimLeadingBlanks(trimTrailingBlanks(text)); }

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
