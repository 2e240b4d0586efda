#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

namespace korvel::testing {

// Sets an environment variable for the life of the object, then restores it.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const QByteArray& value) : m_name(name), m_saved(qgetenv(name)) {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }
    ~ScopedEnvironment() {
        if (m_saved.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, m_saved);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* m_name;
    QByteArray m_saved;
};

// A stand-in for wine, in `dir`: writes its WINEPREFIX and arguments, one a line, to
// `dir`/wine-args, copies the registry file of "regedit /S Z:\..." to `dir`/imported.reg, and ends
// with `exitStatus`. Returns the script's path.
inline QString writeFakeWine(const QTemporaryDir& dir, int exitStatus = 0) {
    const QString script = dir.filePath(QStringLiteral("fake-wine"));
    QFile file(script);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return QString();
    file.write(QStringLiteral("#!/bin/sh\n"
                              "printf '%s\\n' \"$WINEPREFIX\" \"$@\" > '%1/wine-args'\n"
                              "f=$(printf '%s' \"$3\" | sed 's/^Z://' | tr '\\\\\\\\' '/')\n"
                              "[ -f \"$f\" ] && cp \"$f\" '%1/imported.reg'\n"
                              "exit %2\n")
                   .arg(dir.path())
                   .arg(exitStatus)
                   .toUtf8());
    file.close();
    file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    return script;
}

// A file's bytes; empty when it cannot be read.
inline QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// UTF-16LE text after a byte-order mark.
inline QString fromUtf16File(const QByteArray& bytes) {
    return QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData() + 2), (bytes.size() - 2) / 2);
}

} // namespace korvel::testing
