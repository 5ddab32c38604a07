// SPDX-License-Identifier: Apache-2.0

// Calls Init with the input as initialization string. The files that it names are in the work directory,
// which is empty, so a parameter file can only be a file that the same string made the module write.
#include "fuzz/harness.h"
#include "fuzz/host.h"
#include "fuzz/mq_script.h"
#include "fuzz/text_input.h"
#include "fuzz/work_directory.h"

void RunInput(ByteReader input) {
    std::string initString = TakeText(input, 34000);
    ConfinePaths(initString);
    PlayCalmQueue(1);
    (void)HostInit(initString);
    (void)HostOpen();
    (void)HostClose();
    (void)HostShut(0);
}
