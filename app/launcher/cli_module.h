#pragma once

// How the korvel-cli launcher finds the full command set: a module beside the program (the build
// tree) or in <libdir>/korvel (installed), entered with the process's own argc and argv.

inline constexpr const char* kCliModuleFile = "korvel_cli_commands.so";
inline constexpr const char* kCliEntryFunction = "korvel_cli_main";

extern "C" {
using CliEntryFunction = int (*)(int argc, char** argv);
}
