// The desktop application.

#include "gui/korvel_application.h"

int main(int argc, char** argv) {
    return korvel::app::runKorvel(argc, argv);
}
