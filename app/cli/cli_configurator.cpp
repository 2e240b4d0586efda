#include "cli_command.h"

namespace korvel::cli {

std::vector<Command> configuratorCommands() { return {}; }

} // namespace korvel::cli
