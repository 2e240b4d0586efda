#pragma once

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

namespace korvel::testing {

// How a bad file reaches the program in its row of the corpus.
enum class BadInputUse {
    List,     // korvel-cli list FILE
    Extract,  // korvel-cli extract FILE --to OUT; nothing may appear outside OUT
    PodIni,   // the game folder's POD.INI; korvel-cli mounter --game DIR show
    Monster,  // the game folder's system\monster.ini; korvel-cli monster --game DIR
    Drivers,  // the game folder's player.pro; korvel-cli drivers --game DIR list
    Palette,  // korvel-cli palette FILE
    Settings, // the settings file ($KORVEL_REGISTRY); korvel-cli settings show
};

// One file of tests/data/bad/ with the outcome it must give.
struct BadInput {
    const char* file;      // name under tests/data/bad/
    const char* what;      // what is wrong with it
    std::string (*make)(); // builds its bytes; the committed file must equal them
    BadInputUse use;
    int exitCode;    // 0 accepted, 1 refused
    QString message; // the message on stderr (refused) or a line on stdout (accepted); empty: no check
};

// Every row of the corpus.
const std::vector<BadInput>& badInputs();

// The corpus folder (tests/data/bad).
QString badInputFolder();

} // namespace korvel::testing
