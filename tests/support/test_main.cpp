// The main of every test program.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/os.h"

namespace {

constexpr char kStartedFile[] = "MQAMOD_STARTED_FILE";

void Tell(const std::string& path, const std::string& text) {
    if (path.empty()) return;
    if (std::FILE* file = std::fopen(path.c_str(), "w"); file != nullptr) {
        std::fputs(text.c_str(), file);
        std::fclose(file);
    }
}

// For scripts/wine-run, which runs Windows programs: the file exists once the program has started, and
// contains the exit code once its tests are over. Programs that tests start must not write it.
std::string TakeStartedFile() {
    const char* path = std::getenv(kStartedFile);
    if (path == nullptr) return {};
    std::string taken = path;
    SetEnvironment(kStartedFile, "");
    return taken;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string startedFile = TakeStartedFile();
    Tell(startedFile, "");  // before anything that can fail
    MakeCrashesQuiet();
    testing::InitGoogleMock(&argc, argv);
    const int code = RUN_ALL_TESTS();
    Tell(startedFile, std::to_string(code));
    EndTestProgram(code);
}
