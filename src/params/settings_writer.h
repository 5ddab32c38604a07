// Write access to the settings, for the keyword validation and the resolution of this folder.
#pragma once

#include "params/settings.h"

extern Settings writableSettings;

/// Sets what every Init resets to its defaults.
void ResetSettings();
