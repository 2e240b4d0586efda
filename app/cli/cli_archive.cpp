#include "cli_command.h"

namespace korvel::cli {

std::vector<Command> archiveCommands() { return {}; }

} // namespace korvel::cli
