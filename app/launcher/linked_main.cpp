// korvel-cli on systems without the launcher's loader calls (Windows): the command set is linked into
// the program and runs every command line itself.

extern "C" int korvel_cli_main(int argc, char** argv);

int main(int argc, char** argv) {
    return korvel_cli_main(argc, argv);
}
