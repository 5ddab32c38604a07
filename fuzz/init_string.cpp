// The input is the initialization string. Its files are those of the work folder, which is empty; a parameter
// file that it names can only be one that this very string had the module make.
#include "fuzz/harness.h"
#include "fuzz/host.h"
#include "fuzz/mq_script.h"
#include "fuzz/text_input.h"
#include "fuzz/work_folder.h"

void RunInput(ByteReader input) {
    std::string initString = TakeText(input, 34000);
    ConfinePaths(initString);
    PlayCalmQueue(1);
    (void)HostInit(initString);
    (void)HostOpen();
    (void)HostClose();
    (void)HostShut(0);
}
