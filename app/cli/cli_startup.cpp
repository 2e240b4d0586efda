#include "cli_command.h"

namespace korvel::cli {

std::vector<Command> startupCommands() { return {}; }

} // namespace korvel::cli
