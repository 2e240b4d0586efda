#include "cli_command.h"

namespace korvel::cli {

std::vector<Command> mounterCommands() { return {}; }

} // namespace korvel::cli
