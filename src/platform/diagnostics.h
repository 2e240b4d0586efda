#pragma once

#include <QLoggingCategory>

// Developer diagnostics, one category per part of the program. All of them are off by default; turn
// them on with QT_LOGGING_RULES, e.g. QT_LOGGING_RULES="korvel.*=true" (or "korvel.pod.info=true").
// Nothing a user needs goes here: every failure also comes back as a Status with its text.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform) // "korvel.platform": saves, locks, trash, left-over temporaries
Q_DECLARE_LOGGING_CATEGORY(lcPod)      // "korvel.pod": refused archives, extraction failures
Q_DECLARE_LOGGING_CATEGORY(lcMounter)  // "korvel.mounter": POD.INI loads and saves
