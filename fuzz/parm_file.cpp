// SPDX-License-Identifier: Apache-2.0

// Calls Init with the input as parameter file. Slashes are removed, because the module reads the file in
// pieces of 511 characters, and a slash anywhere could become the first character of a path.
#include "fuzz/harness.h"
#include "fuzz/host.h"
#include "fuzz/mq_script.h"
#include "fuzz/text_input.h"
#include "fuzz/work_directory.h"

void RunInput(ByteReader input) {
    std::string file = TakeText(input, 4000);
    DropSlashes(file);
    WriteFile("parms", file);
    PlayCalmQueue(1);
    (void)HostInit("QMGR M QNM Q -PARMFILE parms");
    (void)HostOpen();
    (void)HostClose();
    (void)HostShut(0);
}
