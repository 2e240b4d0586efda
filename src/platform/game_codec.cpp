#include "game_codec.h"

#include <QFile>
#include <QStringDecoder>
#include <QStringEncoder>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace korvel {

namespace {

// Windows-1252 bytes 0x80..0x9F; the five undefined bytes map to the C1 controls, as Windows does.
constexpr std::array<char16_t, 32> kHighTable = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

std::optional<char> encode1252(char16_t u) {
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return static_cast<char>(u);
    for (size_t i = 0; i < kHighTable.size(); ++i) {
        if (kHighTable[i] == u)
            return static_cast<char>(0x80 + i);
    }
    return std::nullopt;
}

struct KnownCodePage {
    int number;
    const char* converter;
};

// The code pages Windows uses as ANSI code pages, by the converter names Qt knows them by.
constexpr KnownCodePage kCodePages[] = {
    {874, "windows-874"},   {932, "Shift_JIS"},     {936, "GBK"},           {949, "windows-949"},
    {950, "Big5"},          {1250, "windows-1250"}, {1251, "windows-1251"}, {1252, ""},
    {1253, "windows-1253"}, {1254, "windows-1254"}, {1255, "windows-1255"}, {1256, "windows-1256"},
    {1257, "windows-1257"}, {1258, "windows-1258"}, {65001, "UTF-8"},
};

bool isDoubleByte(int codePage) {
    return codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950;
}

std::mutex g_activeMutex;
std::vector<std::unique_ptr<const GameCodec>> g_codecs; // every codec made active, kept for readers
std::atomic<const GameCodec*> g_active{nullptr};

} // namespace

GameCodec::GameCodec() {
    buildTables();
}

GameCodec::GameCodec(int codePage, QByteArray converterName)
    : m_codePage(codePage), m_converterName(std::move(converterName)) {
    buildTables();
}

std::optional<GameCodec> GameCodec::forCodePage(int codePage) {
    for (const KnownCodePage& known : kCodePages) {
        if (known.number != codePage)
            continue;
        if (codePage == 1252)
            return GameCodec();
        if (!QStringDecoder(known.converter).isValid() || !QStringEncoder(known.converter).isValid())
            return std::nullopt;
        return GameCodec(codePage, QByteArray(known.converter));
    }
    return std::nullopt;
}

std::optional<GameCodec> GameCodec::fromText(const QString& text) {
    QString name = text.trimmed().toLower();
    for (const QString& prefix : {QStringLiteral("windows-"), QStringLiteral("cp"), QStringLiteral("ansi")}) {
        if (name.startsWith(prefix)) {
            name = name.mid(prefix.size());
            break;
        }
    }
    bool ok = false;
    const int number = name.toInt(&ok);
    if (ok)
        return forCodePage(number);
    if (name == QLatin1String("shift_jis") || name == QLatin1String("shift-jis") || name == QLatin1String("sjis"))
        return forCodePage(932);
    if (name == QLatin1String("gbk"))
        return forCodePage(936);
    if (name == QLatin1String("big5"))
        return forCodePage(950);
    if (name == QLatin1String("utf-8") || name == QLatin1String("utf8"))
        return forCodePage(65001);
    return std::nullopt;
}

QString GameCodec::name() const {
    if (m_converterName.isEmpty())
        return QStringLiteral("windows-1252");
    return QString::fromLatin1(m_converterName);
}

void GameCodec::buildTables() {
    for (int b = 0; b < 256; ++b) {
        m_upper[static_cast<size_t>(b)] = static_cast<char>(b >= 'a' && b <= 'z' ? b - 32 : b);
        m_lead[static_cast<size_t>(b)] = false;
    }
    if (m_converterName.isEmpty()) {
        for (int b = 0xE0; b <= 0xFE; ++b) {
            if (b != 0xF7)
                m_upper[static_cast<size_t>(b)] = static_cast<char>(b - 32);
        }
        m_upper[0x9A] = static_cast<char>(0x8A); // s caron
        m_upper[0x9C] = static_cast<char>(0x8C); // oe
        m_upper[0x9E] = static_cast<char>(0x8E); // z caron
        m_upper[0xFF] = static_cast<char>(0x9F); // y diaeresis
        return;
    }
    if (isDoubleByte(m_codePage)) {
        for (int b = 0x81; b <= 0xFE; ++b) {
            const bool lead = m_codePage != 932 || b <= 0x9F || (b >= 0xE0 && b <= 0xFC);
            m_lead[static_cast<size_t>(b)] = lead;
        }
        return;
    }
    if (m_codePage == 65001)
        return;
    for (int b = 0x80; b < 256; ++b) {
        const char byte = static_cast<char>(b);
        const QString letter = decode(std::string_view(&byte, 1));
        const QString upperLetter = letter.toUpper();
        if (upperLetter == letter)
            continue;
        const std::optional<std::string> upperByte = encode(upperLetter);
        if (upperByte && upperByte->size() == 1)
            m_upper[static_cast<size_t>(b)] = upperByte->front();
    }
}

QString GameCodec::decode(std::string_view bytes) const {
    if (m_converterName.isEmpty()) {
        QString out;
        out.resize(static_cast<qsizetype>(bytes.size()));
        QChar* data = out.data();
        for (size_t i = 0; i < bytes.size(); ++i) {
            auto b = static_cast<unsigned char>(bytes[i]);
            data[i] = (b >= 0x80 && b < 0xA0) ? QChar(kHighTable[b - 0x80]) : QChar(b);
        }
        return out;
    }
    QStringDecoder decoder(m_converterName.constData(), QStringConverter::Flag::Stateless);
    return decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

std::optional<std::string> GameCodec::encode(const QString& text) const {
    if (m_converterName.isEmpty()) {
        std::string out;
        out.reserve(static_cast<size_t>(text.size()));
        for (QChar c : text) {
            const std::optional<char> byte = encode1252(c.unicode());
            if (!byte)
                return std::nullopt;
            out.push_back(*byte);
        }
        return out;
    }
    QStringEncoder encoder(m_converterName.constData(), QStringConverter::Flag::Stateless);
    const QByteArray bytes = encoder.encode(text);
    if (encoder.hasError())
        return std::nullopt;
    return bytes.toStdString();
}

std::string GameCodec::encodeLossy(const QString& text) const {
    if (std::optional<std::string> exact = encode(text))
        return *exact;
    std::string out;
    for (qsizetype i = 0; i < text.size();) {
        const qsizetype length = text.at(i).isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
        const std::optional<std::string> one = encode(text.mid(i, length));
        out += one ? *one : std::string("?");
        i += length;
    }
    return out;
}

const GameCodec& GameCodec::active() {
    if (const GameCodec* codec = g_active.load(std::memory_order_acquire))
        return *codec;
    static const GameCodec western;
    return western;
}

void GameCodec::setActive(const GameCodec& codec) {
    std::lock_guard lock(g_activeMutex);
    // Readers on other threads may still hold the previous codec, so none is ever freed; a program
    // makes only a handful active in its life.
    for (const auto& kept : g_codecs) {
        if (kept->codePage() == codec.codePage()) {
            g_active.store(kept.get(), std::memory_order_release);
            return;
        }
    }
    g_codecs.push_back(std::make_unique<const GameCodec>(codec));
    g_active.store(g_codecs.back().get(), std::memory_order_release);
}

std::optional<int> localeCodePage(const QString& localeName) {
    QString name = localeName.section(QLatin1Char('.'), 0, 0).section(QLatin1Char('@'), 0, 0);
    if (name.isEmpty() || name == QLatin1String("C") || name == QLatin1String("POSIX"))
        return std::nullopt;
    const QString language = name.section(QLatin1Char('_'), 0, 0).toLower();
    const QString country = name.section(QLatin1Char('_'), 1, 1).toUpper();
    struct Group {
        int codePage;
        std::initializer_list<const char*> languages;
    };
    static const Group groups[] = {
        {1251, {"ru", "uk", "be", "bg", "sr", "mk", "kk", "ky", "tg", "tt", "mn", "ba", "cv"}},
        {1250, {"pl", "cs", "sk", "hu", "sl", "hr", "ro", "bs", "sq", "hsb", "dsb"}},
        {1253, {"el"}},
        {1254, {"tr", "az", "uz"}},
        {1255, {"he", "yi"}},
        {1256, {"ar", "fa", "ur", "ps", "ug"}},
        {1257, {"lt", "lv", "et"}},
        {1258, {"vi"}},
        {874, {"th", "lo"}},
        {932, {"ja"}},
        {949, {"ko"}},
    };
    if (language == QLatin1String("zh"))
        return (country == QLatin1String("TW") || country == QLatin1String("HK") || country == QLatin1String("MO"))
                   ? 950
                   : 936;
    if (language == QLatin1String("sr") && localeName.contains(QLatin1String("latin"), Qt::CaseInsensitive))
        return 1250;
    for (const Group& group : groups) {
        for (const char* candidate : group.languages) {
            if (language == QLatin1String(candidate))
                return group.codePage;
        }
    }
    return 1252;
}

std::optional<int> winePrefixCodePage(const QString& prefix) {
    QFile file(prefix + QStringLiteral("/system.reg"));
    if (prefix.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    // Keys are "[System\\CurrentControlSet\\Control\\Nls\\CodePage] 1700000000" lines; values
    // follow as "name"="data" until the next key.
    const QByteArray wanted = "system\\\\currentcontrolset\\\\control\\\\nls\\\\codepage]";
    bool inKey = false;
    qint64 lines = 0;
    while (!file.atEnd() && ++lines < 2'000'000) {
        const QByteArray line = file.readLine(1 << 16).trimmed();
        if (line.startsWith('[')) {
            inKey = line.mid(1).toLower().startsWith(wanted);
            continue;
        }
        if (!inKey || !line.toLower().startsWith("\"acp\"="))
            continue;
        QByteArray data = line.mid(6).trimmed();
        if (data.size() < 2 || !data.startsWith('"') || !data.endsWith('"'))
            return std::nullopt;
        bool ok = false;
        const int codePage = data.mid(1, data.size() - 2).toInt(&ok);
        return ok && codePage > 0 ? std::optional<int>(codePage) : std::nullopt;
    }
    return std::nullopt;
}

Result<CodePageChoice> chooseGameCodec(const QString& explicitChoice, const QString& profileSetting,
                                       const QString& winePrefix) {
    const std::pair<QString, QString> named[] = {
        {explicitChoice, QStringLiteral("--codepage")},
        {qEnvironmentVariable("KORVEL_CODEPAGE"), QStringLiteral("KORVEL_CODEPAGE")},
        {profileSetting, QStringLiteral("the profile's settings")},
    };
    for (const auto& [text, source] : named) {
        if (text.trimmed().isEmpty())
            continue;
        if (std::optional<GameCodec> codec = GameCodec::fromText(text))
            return CodePageChoice{*codec, source};
        return refused(QStringLiteral("The code page \"%1\" (from %2) is not one Korvel can convert. Name a Windows "
                                      "ANSI code page such as 1252, 1251, 1250 or 932.")
                           .arg(text.trimmed(), source));
    }
    return systemGameCodec(winePrefix);
}

CodePageChoice systemGameCodec(const QString& winePrefix) {
#ifdef Q_OS_WIN
    Q_UNUSED(winePrefix);
    if (std::optional<GameCodec> codec = GameCodec::forCodePage(static_cast<int>(GetACP())))
        return CodePageChoice{*codec, QStringLiteral("the system")};
#else
    if (std::optional<int> number = winePrefixCodePage(winePrefix)) {
        if (std::optional<GameCodec> codec = GameCodec::forCodePage(*number))
            return CodePageChoice{*codec, QStringLiteral("the Wine prefix")};
    }
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const QString locale = qEnvironmentVariable(variable);
        if (locale.isEmpty())
            continue;
        if (std::optional<int> number = localeCodePage(locale)) {
            if (std::optional<GameCodec> codec = GameCodec::forCodePage(*number))
                return CodePageChoice{*codec, QStringLiteral("the locale")};
        }
        break;
    }
#endif
    return CodePageChoice{GameCodec(), QStringLiteral("the default")};
}

QString unrepresentableMessage(const QString& name) {
    return QStringLiteral("The name \"%1\" cannot be written in the game's code page (%2), so the game could not "
                          "find it. Rename it using only letters of that code page, or choose the profile's code "
                          "page in Options.")
        .arg(name, GameCodec::active().name());
}

} // namespace korvel
