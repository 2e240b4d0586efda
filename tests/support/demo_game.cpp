#include "demo_game.h"

#include "pod_writer.h"

namespace korvel::testing {

namespace {

std::string filler(const std::string& seed, size_t size) {
    std::string out;
    out.reserve(size);
    while (out.size() < size)
        out += seed;
    out.resize(size);
    return out;
}

std::string trackPod1(const std::string& comment, const std::string& stem, int race, bool traxx) {
    PodWriter pod;
    pod.comment(comment);
    pod.add(stem + ".SIT", trackInfoText(18, std::to_string(race), traxx ? "Traxxville USA" : stem + " Speedway"));
    pod.add("ART\\" + stem + ".RAW", filler("terrain", 40000));
    pod.add("ART\\" + stem + ".ACT", filler("\x10\x20\x30", 768));
    return pod.pod1();
}

std::string trackPod2(const std::string& comment, const std::string& stem, int race) {
    PodWriter pod;
    pod.comment(comment);
    pod.add(stem + ".SIT", trackInfoText(12, std::to_string(race)));
    pod.add("WORLD\\" + stem + ".BIN", filler("world", 25000));
    return pod.pod2();
}

} // namespace

std::string truckText(const std::string& name, char version) {
    return "truck " + name + "\r\nversion =" + std::string(1, version) + "\r\nengine=v8\r\n";
}

std::vector<DemoFile> demoGameFiles() {
    std::vector<DemoFile> files;
    files.push_back({"monster.exe", "MZ Korvel demo game: a stand-in for the game's executable.\r\n"});

    PodWriter trucks;
    trucks.comment("Stock trucks");
    for (const char* name : {"RAM", "BIGFOOT", "GRAVEDIGGER", "SAMSON"}) {
        trucks.add(std::string("TRUCK\\") + name + ".TRK", truckText(name, '5'));
        trucks.add(std::string("ART\\") + name + ".RAW", filler(name, 30000));
    }
    files.push_back({"TRUCKS.POD", trucks.pod1()});

    files.push_back({"TRAXX.POD", trackPod1("Traxxville", "TRAXX", 2, true)});
    files.push_back({"RALLY.POD", trackPod2("Mud Rally", "MUDRALLY", 3)});
    files.push_back({"ADDON/DRAGSTRP.POD", trackPod1("Drag Strip", "DRAGSTRP", 1, false)});
    files.push_back({"ADDON/ARENA.POD", trackPod2("Rumble Arena", "ARENA", 4)});
    files.push_back({"ADDON/BOMBTAG.POD", trackPod1("Bomb Tag Bowl", "BOMBTAG", 5, false)});

    PodWriter merged;
    merged.comment("Merged add-on pack");
    merged.add("PACK1.SIT", trackInfoText(18, "2"));
    merged.add("PACK2.SIT", trackInfoText(18, "3"));
    merged.add("TRUCK\\MONSTER.TRK", truckText("MONSTER", '4'));
    files.push_back({"ADDON/MEGAPACK.POD", merged.pod2()});

    PodWriter truck2;
    truck2.comment("Fan truck");
    truck2.add("TRUCK\\WIDOW.TRK", truckText("WIDOW", '4'));
    truck2.add("ART\\WIDOW.RAW", filler("widow", 20000));
    // A folder the Mounter finds only through the extra search folders (it is two levels down).
    files.push_back({"DOWNLOADS/PODS/WIDOW.POD", truck2.pod2()});

    files.push_back({"POD.INI", "4\r\nTRUCKS.POD\r\nTRAXX.POD\r\nADDON\\DRAGSTRP.POD\r\nOLDTRACK.POD\r\n"});
    files.push_back({"system/monster.ini",
                     "; Monster Truck Madness 2 settings (demo)\r\n[Game]\r\nshowHiddenTrack=0\r\nkookyHornFlag=1\r\n"
                     "gLocalizationFile=UI\\MTM2.loc\r\ngDetail=3\r\n"});
    std::string player = "103\r\n3\r\n1\r\n";
    for (const char* name : {"Mad Max", "Sally", "Crusher"}) {
        player += std::string(name) + "\r\nrank=3\r\nTRUCK\\RAM.TRK\r\n";
        for (int i = 1; i <= 5; ++i)
            player += "stat" + std::to_string(i) + "=" + std::to_string(i * 7) + "\r\n";
    }
    files.push_back({"player.pro", player});
    for (const char* loc : {"MTM2.loc", "MTM2-fun.loc", "MTM2-pig.loc"})
        files.push_back({std::string("UI/") + loc, std::string("; language file ") + loc + "\r\n"});
    std::string palette;
    for (int i = 0; i < 256; ++i) {
        palette.push_back(static_cast<char>(i));
        palette.push_back(static_cast<char>((i * 3) & 0xFF));
        palette.push_back(static_cast<char>(255 - i));
    }
    files.push_back({"ART/DEMO.ACT", palette});
    return files;
}

} // namespace korvel::testing
