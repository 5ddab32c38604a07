// SPDX-License-Identifier: Apache-2.0
#include "params/settings.h"

namespace mqamod {

Settings writableSettings;

const Settings& Setting() {
    return writableSettings;
}

void StopLogging() {
    writableSettings.LOG = false;
}

void ResetSettings() {
    writableSettings.TLF = true;
    writableSettings.TDM = true;
    writableSettings.BKSZ = 1048576;
    writableSettings.RWAIT = 15000;
    writableSettings.OWAIT = 5;
    writableSettings.OTENACITY = 5;
    writableSettings.FLUSH = false;
    writableSettings.flushT = false;
    writableSettings.CONVERT = 0;
    writableSettings.LOG = false;
    writableSettings.CKFILE = false;
    writableSettings.MqCheckpointMode = false;
}

}  // namespace mqamod
