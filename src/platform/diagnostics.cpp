#include "diagnostics.h"

// Info and debug messages only, below the default threshold of warnings: silent until enabled.
Q_LOGGING_CATEGORY(lcPlatform, "korvel.platform", QtWarningMsg)
Q_LOGGING_CATEGORY(lcPod, "korvel.pod", QtWarningMsg)
Q_LOGGING_CATEGORY(lcMounter, "korvel.mounter", QtWarningMsg)
