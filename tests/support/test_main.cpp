// SPDX-License-Identifier: Apache-2.0

// Contains the main of every test program.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/environment.h"
#include "platform/process.h"
#include "tests/support/c_library.h"

namespace {

constexpr char kStartedFile[] = "MQAMOD_STARTED_FILE";

void Report(const std::string& path, const std::string& text) {
    if (path.empty()) return;
    if (std::FILE* file = std::fopen(path.c_str(), "w"); file != nullptr) {
        std::fputs(text.c_str(), file);
        std::fclose(file);
    }
}

// Returns the path of the file in which scripts/wine-run follows a Windows program: the file exists once the
// program has started, and contains the exit code once its tests are over. Removes the path from the
// environment, because programs that tests start must not write the file.
std::string TakeStartedFile() {
    const char* path = std::getenv(kStartedFile);
    if (path == nullptr) return {};
    std::string taken = path;
    platform::SetEnvironment(kStartedFile, "");
    return taken;
}

/// Clears the variables that select some of the tests and the file for their results. A program that a test
/// starts may be this program again, and must not obey them.
class RunnersVariables : public testing::Environment {
  public:
    void SetUp() override {
        for (const char* variable : {"GTEST_TOTAL_SHARDS", "GTEST_SHARD_INDEX", "GTEST_OUTPUT"})
            platform::SetEnvironment(variable, "");
    }
};

}  // namespace

int main(int argc, char** argv) {
    const std::string startedFile = TakeStartedFile();
    Report(startedFile, "");  // before anything that can fail
    platform::SuppressCrashDialogs();
    platform::RaiseOpenFileLimit();
    testing::InitGoogleMock(&argc, argv);
    testing::AddGlobalTestEnvironment(new RunnersVariables);  // owned by GoogleTest
    const int code = RUN_ALL_TESTS();
    Report(startedFile, std::to_string(code));
    EndTestProgram(code);
}
