// korvel-demo-game DIR: writes a complete sample game installation of the Monster Truck Madness 2
// kind, generated here (nothing is copied from any game), for the demo and for trying Korvel out.

#include "demo_game.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <string>

namespace {

bool writeFile(const QString& path, const std::string& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream err(stderr);
    const QStringList args = app.arguments();
    if (args.size() != 2 || args[1].startsWith(QLatin1Char('-'))) {
        err << "Usage: korvel-demo-game DIR\nWrites a sample Monster Truck Madness 2 installation into DIR.\n";
        return 2;
    }
    const QString dir = QDir(args[1]).absolutePath();
    bool ok = true;
    for (const korvel::testing::DemoFile& file : korvel::testing::demoGameFiles())
        ok = writeFile(dir + QLatin1Char('/') + QString::fromStdString(file.path), file.bytes) && ok;
    if (!ok) {
        err << "korvel-demo-game: could not write the sample game into " << dir << '\n';
        return 1;
    }
    QTextStream(stdout) << "Sample game written to " << dir << '\n';
    return 0;
}
