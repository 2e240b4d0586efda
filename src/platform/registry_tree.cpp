#include "registry_tree.h"

#include "game_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace korvel {

QString rootName(RegistryRoot root) {
    switch (root) {
    case RegistryRoot::ClassesRoot:
        return QStringLiteral("HKEY_CLASSES_ROOT");
    case RegistryRoot::CurrentUser:
        return QStringLiteral("HKEY_CURRENT_USER");
    case RegistryRoot::LocalMachine:
        return QStringLiteral("HKEY_LOCAL_MACHINE");
    case RegistryRoot::Users:
        return QStringLiteral("HKEY_USERS");
    case RegistryRoot::PerformanceData:
        return QStringLiteral("HKEY_PERFORMANCE_DATA");
    case RegistryRoot::CurrentConfig:
        return QStringLiteral("HKEY_CURRENT_CONFIG");
    case RegistryRoot::DynData:
        return QStringLiteral("HKEY_DYN_DATA");
    case RegistryRoot::None:
        break;
    }
    return QString();
}

namespace {

QString latin1Of(const std::string& bytes) {
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

std::string bytesOf(const QString& text) {
    const QByteArray latin = text.toLatin1();
    return std::string(latin.constData(), static_cast<size_t>(latin.size()));
}

std::string trimSlashes(const std::string& subkey) {
    size_t start = subkey.find_first_not_of('\\');
    if (start == std::string::npos)
        return std::string();
    size_t end = subkey.find_last_not_of('\\');
    return subkey.substr(start, end - start + 1);
}

} // namespace

std::string RegistryTree::fullPath(RegistryRoot root, const std::string& subkey) {
    std::string path = toGameText(rootName(root));
    const std::string rest = trimSlashes(subkey);
    if (!rest.empty())
        path += "\\" + rest;
    return path;
}

std::string RegistryTree::fold(const std::string& text) {
    return upperGame(text);
}

bool RegistryTree::keyExists(RegistryRoot root, const std::string& subkey) {
    if (root == RegistryRoot::None)
        return false;
    if (trimSlashes(subkey).empty())
        return true; // the roots always exist
    return m_keys.count(fold(fullPath(root, subkey))) != 0;
}

bool RegistryTree::createKey(RegistryRoot root, const std::string& subkey) {
    if (root == RegistryRoot::None)
        return false;
    const std::string rest = trimSlashes(subkey);
    if (rest.empty())
        return true;
    std::string partial = toGameText(rootName(root));
    for (const std::string& piece : splitText(rest, '\\')) {
        if (piece.empty())
            return false; // "a\\b" is not a key name
        partial += "\\" + piece;
        auto [it, inserted] = m_keys.try_emplace(fold(partial));
        if (inserted)
            it->second.path = partial;
    }
    return true;
}

bool RegistryTree::deleteKey(RegistryRoot root, const std::string& subkey) {
    if (trimSlashes(subkey).empty())
        return false;
    const std::string folded = fold(fullPath(root, subkey));
    auto it = m_keys.find(folded);
    if (it == m_keys.end())
        return false;
    const std::string childPrefix = folded + "\\";
    auto child = m_keys.lower_bound(childPrefix);
    if (child != m_keys.end() && child->first.compare(0, childPrefix.size(), childPrefix) == 0)
        return false; // still has subkeys
    m_keys.erase(it);
    return true;
}

std::optional<std::string> RegistryTree::readValue(RegistryRoot root, const std::string& subkey,
                                                   const std::string& name) {
    auto it = m_keys.find(fold(fullPath(root, subkey)));
    if (it == m_keys.end())
        return std::nullopt;
    auto value = it->second.values.find(fold(name));
    if (value == it->second.values.end())
        return std::nullopt;
    return value->second.second;
}

bool RegistryTree::writeValue(RegistryRoot root, const std::string& subkey, const std::string& name,
                              const std::string& data) {
    if (root == RegistryRoot::None)
        return false;
    if (trimSlashes(subkey).empty())
        return false; // values are never written on a root itself here
    auto it = m_keys.find(fold(fullPath(root, subkey)));
    if (it == m_keys.end())
        return false;
    auto& slot = it->second.values[fold(name)];
    if (slot.first.empty())
        slot.first = name;
    slot.second = data;
    return true;
}

QByteArray RegistryTree::serialize() const {
    QJsonArray keys;
    for (const auto& [folded, key] : m_keys) {
        QJsonObject values;
        for (const auto& [foldedName, value] : key.values)
            values.insert(latin1Of(value.first), latin1Of(value.second));
        QJsonObject entry;
        entry.insert(QStringLiteral("key"), latin1Of(key.path));
        entry.insert(QStringLiteral("values"), values);
        keys.append(entry);
    }
    QJsonObject root;
    root.insert(QStringLiteral("korvelRegistry"), 1);
    root.insert(QStringLiteral("keys"), keys);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool RegistryTree::deserialize(const QByteArray& document) {
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(document, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return false;
    const QJsonObject root = doc.object();
    if (root.value(QStringLiteral("korvelRegistry")).toInt() != 1 || !root.value(QStringLiteral("keys")).isArray())
        return false;
    std::map<std::string, Key> keys;
    for (const QJsonValue& item : root.value(QStringLiteral("keys")).toArray()) {
        const QJsonObject entry = item.toObject();
        const QJsonValue path = entry.value(QStringLiteral("key"));
        const QJsonValue values = entry.value(QStringLiteral("values"));
        if (!path.isString() || !values.isObject())
            return false;
        Key key;
        key.path = bytesOf(path.toString());
        const QJsonObject object = values.toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            if (!it.value().isString())
                return false;
            const std::string name = bytesOf(it.key());
            key.values[fold(name)] = {name, bytesOf(it.value().toString())};
        }
        keys[fold(key.path)] = std::move(key);
    }
    m_keys = std::move(keys);
    return true;
}

} // namespace korvel
