// The main of every test program.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/os.h"

int main(int argc, char** argv) {
    // A sign of life for the runner of Windows programs, before anything that can fail: scripts/wine-run.
    if (const char* path = std::getenv("MQAMOD_STARTED_FILE"); path != nullptr) {
        if (std::FILE* file = std::fopen(path, "w"); file != nullptr) std::fclose(file);
    }
    MakeCrashesQuiet();
    testing::InitGoogleMock(&argc, argv);
    EndTestProgram(RUN_ALL_TESTS());
}
