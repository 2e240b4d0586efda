// korvel-demo-game DIR: writes a complete sample game installation of the Monster Truck Madness 2
// kind, generated here (nothing is copied from any game), for the demo and for trying Korvel out.

#include "pod_writer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <string>

using korvel::testing::PodWriter;
using korvel::testing::trackInfoText;

namespace {

bool writeFile(const QString& path, const std::string& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
}

std::string filler(const std::string& seed, size_t size) {
    std::string out;
    out.reserve(size);
    while (out.size() < size)
        out += seed;
    out.resize(size);
    return out;
}

std::string truckText(const std::string& name, char version) {
    return "truck " + name + "\r\nversion = " + std::string(1, version) + "\r\nengine=v8\r\n";
}

std::string trackPod1(const std::string& comment, const std::string& stem, int race, bool traxx) {
    PodWriter pod;
    pod.comment(comment);
    std::string info = trackInfoText(18, std::to_string(race), traxx ? "Traxxville USA" : stem + " Speedway");
    info += "Track Race Type = " + std::to_string(race) + "\r\n";
    pod.add(stem + ".SIT", info);
    pod.add("ART\\" + stem + ".RAW", filler("terrain", 40000));
    pod.add("ART\\" + stem + ".ACT", filler("\x10\x20\x30", 768));
    return pod.pod1();
}

std::string trackPod2(const std::string& comment, const std::string& stem, int race) {
    PodWriter pod;
    pod.comment(comment);
    std::string info = trackInfoText(12, std::to_string(race));
    info += "Track Race Type = " + std::to_string(race) + "\r\n";
    pod.add(stem + ".SIT", info);
    pod.add("WORLD\\" + stem + ".BIN", filler("world", 25000));
    return pod.pod2();
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
    auto put = [&](const QString& relative, const std::string& bytes) { ok = writeFile(dir + "/" + relative, bytes) && ok; };

    put(QStringLiteral("monster.exe"), "MZ Korvel demo game: a stand-in for the game's executable.\r\n");

    PodWriter trucks;
    trucks.comment("Stock trucks");
    for (const char* name : {"RAM", "BIGFOOT", "GRAVEDIGGER", "SAMSON"}) {
        trucks.add(std::string("TRUCK\\") + name + ".TRK", truckText(name, '5'));
        trucks.add(std::string("ART\\") + name + ".RAW", filler(name, 30000));
    }
    put(QStringLiteral("TRUCKS.POD"), trucks.pod1());

    put(QStringLiteral("TRAXX.POD"), trackPod1("Traxxville", "TRAXX", 2, true));
    put(QStringLiteral("RALLY.POD"), trackPod2("Mud Rally", "MUDRALLY", 3));
    put(QStringLiteral("ADDON/DRAGSTRP.POD"), trackPod1("Drag Strip", "DRAGSTRP", 1, false));
    put(QStringLiteral("ADDON/ARENA.POD"), trackPod2("Rumble Arena", "ARENA", 4));
    put(QStringLiteral("ADDON/BOMBTAG.POD"), trackPod1("Bomb Tag Bowl", "BOMBTAG", 5, false));

    PodWriter merged;
    merged.comment("Merged add-on pack");
    merged.add("PACK1.SIT", trackInfoText(18, "2"));
    merged.add("PACK2.SIT", trackInfoText(18, "3"));
    merged.add("TRUCK\\MONSTER.TRK", truckText("MONSTER", '4'));
    put(QStringLiteral("ADDON/MEGAPACK.POD"), merged.pod2());

    PodWriter truck2;
    truck2.comment("Fan truck");
    truck2.add("TRUCK\\WIDOW.TRK", truckText("WIDOW", '4'));
    truck2.add("ART\\WIDOW.RAW", filler("widow", 20000));
    // A folder the Mounter finds only through the extra search folders (it is two levels down).
    put(QStringLiteral("DOWNLOADS/PODS/WIDOW.POD"), truck2.pod2());

    put(QStringLiteral("POD.INI"), "4\r\nTRUCKS.POD\r\nTRAXX.POD\r\nADDON\\DRAGSTRP.POD\r\nOLDTRACK.POD\r\n");
    put(QStringLiteral("system/monster.ini"),
        "; Monster Truck Madness 2 settings (demo)\r\n[Game]\r\nshowHiddenTrack=0\r\nkookyHornFlag=1\r\n"
        "gLocalizationFile=UI\\MTM2.loc\r\ngDetail=3\r\n");
    std::string player = "103\r\n3\r\n1\r\n";
    for (const char* name : {"Mad Max", "Sally", "Crusher"}) {
        player += std::string(name) + "\r\nrank=3\r\nTRUCK\\RAM.TRK\r\n";
        for (int i = 1; i <= 5; ++i)
            player += "stat" + std::to_string(i) + "=" + std::to_string(i * 7) + "\r\n";
    }
    put(QStringLiteral("player.pro"), player);
    for (const char* loc : {"MTM2.loc", "MTM2-fun.loc", "MTM2-pig.loc"})
        put(QStringLiteral("UI/") + loc, std::string("; language file ") + loc + "\r\n");
    std::string palette;
    for (int i = 0; i < 256; ++i) {
        palette.push_back(static_cast<char>(i));
        palette.push_back(static_cast<char>((i * 3) & 0xFF));
        palette.push_back(static_cast<char>(255 - i));
    }
    put(QStringLiteral("ART/DEMO.ACT"), palette);

    if (!ok) {
        err << "korvel-demo-game: could not write the sample game into " << dir << '\n';
        return 1;
    }
    QTextStream(stdout) << "Sample game written to " << dir << '\n';
    return 0;
}
