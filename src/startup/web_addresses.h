#pragma once

#include "typed_settings.h"

#include <QString>

#include <optional>

// The web addresses the program opens or fetches: the add-on tracks' site, the track-list
// document, the program's own site and the support mail address. None is built in: each is a
// setting of the program key (File > Options > Web) that an environment variable overrides, and
// while one is missing the commands that need it are disabled with a hint on how to set it.
namespace korvel {

// The environment variable that overrides `which`.
const char* addressVariable(WebAddress which);
// The variable's value without surrounding blanks; empty when it is not set.
QString addressOverride(WebAddress which);
// The address in force: the environment's when set, otherwise the stored one; empty when neither.
QString addressInForce(const ProgramSettings& settings, WebAddress which);

// What a control that needs the address says while there is none: where to set one.
QString missingAddressHint(WebAddress which);
// The caption of the address's box in the Options dialog.
QString addressCaption(WebAddress which);
// Why a typed address cannot be used (a web address needs http or https and a host, the support
// address a mail address); nullopt when it can, and for the empty text (not set).
std::optional<QString> addressProblem(WebAddress which, const QString& text);

} // namespace korvel
