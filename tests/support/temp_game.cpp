#include "temp_game.h"

#include "platform/game_path.h"
#include "pod_writer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace korvel::testing {

TempDrive::TempDrive() : m_files(m_paths), m_services{m_paths, m_files, m_registry, m_dialogs, m_shell} {
    if (!m_dir.isValid())
        throw std::runtime_error("no temporary folder");
    m_paths.mapDrive('C', m_dir.path());
}

void TempDrive::write(const std::string& gamePath, const std::string& bytes) {
    const QString path = host(gamePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("cannot write fixture " + gamePath);
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
}

std::string TempDrive::read(const std::string& gamePath) const {
    QFile file(host(gamePath));
    if (!file.open(QIODevice::ReadOnly))
        return std::string();
    const QByteArray bytes = file.readAll();
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

bool TempDrive::exists(const std::string& gamePath) const {
    return QFileInfo::exists(host(gamePath));
}

void TempDrive::makeFolder(const std::string& gamePath) {
    QDir().mkpath(host(gamePath));
}

void TempDrive::remove(const std::string& gamePath) {
    const QString path = host(gamePath);
    if (QFileInfo(path).isDir())
        QDir(path).removeRecursively();
    else
        QFile::remove(path);
}

std::string sampleMonsterIni() {
    return "; Monster Truck Madness 2 settings\r\n"
           "[Game]\r\n"
           "showHiddenTrack=0\r\n"
           "kookyHornFlag=1\r\n"
           "gLocalizationFile=UI\\MTM2.loc\r\n"
           "gDetail=3\r\n";
}

std::string samplePlayerPro() {
    std::string text = "103\r\n3\r\n1\r\n";
    for (const char* name : {"Alice", "Bob", "Carol"}) {
        text += std::string(name) + "\r\n";
        text += "truck=RAM.TRK\r\n";
        for (int i = 1; i <= 5; ++i)
            text += std::string(name) + " stat " + std::to_string(i) + "\r\n";
    }
    return text;
}

void buildGameFolder(TempDrive& drive, const GameLayout& layout) {
    const std::string& folder = layout.folder;
    drive.write(joinGamePath(folder, layout.executable), "MZ stand-in");
    std::string ini = std::to_string(layout.podIni.size()) + "\r\n";
    for (const std::string& entry : layout.podIni)
        ini += entry + "\r\n";
    drive.write(joinGamePath(folder, "POD.INI"), ini);
    for (const auto& [path, contents] : layout.archives)
        drive.write(isAbsoluteGamePath(path) ? path : joinGamePath(folder, path), contents);
    if (layout.monsterIni)
        drive.write(joinGamePath(folder, "system\\monster.ini"), sampleMonsterIni());
    if (layout.playerPro)
        drive.write(joinGamePath(folder, "player.pro"), samplePlayerPro());
}

} // namespace korvel::testing
