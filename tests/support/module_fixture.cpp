// SPDX-License-Identifier: Apache-2.0
#include "tests/support/module_fixture.h"

#include <filesystem>

#include "platform/environment.h"
#include "platform/library.h"
#include "tests/support/c_library.h"
#include "tests/support/files.h"

namespace {

#ifdef MQAMOD_KEEP_MODULES_LOADED
/// The memory that a module leaves allocated is lost when it is unloaded, and the leak checker would report
/// it. So each module stays loaded, and all but the first are loaded from copies, because loading the same
/// file again would return the module that is already loaded.
constexpr bool kKeepModulesLoaded = true;
#else
constexpr bool kKeepModulesLoaded = false;
#endif

std::string ModuleFile() {
    static int loads = 0;
    std::string built = ModulePath();
    if (!kKeepModulesLoaded || loads++ == 0) return built;
    const std::string name =
        "copy" + std::to_string(loads) + "_" + std::filesystem::path(built).filename().string();
    const std::filesystem::path copy = std::filesystem::current_path() / name;
    std::filesystem::copy_file(built, copy);
    return copy.string();
}

}  // namespace

std::string ModulePath() {
    return PathOnSystem(MQAMOD_MODULE_FILE);
}

std::string MqDoublePath() {
    return PathOnSystem(MQAMOD_MQ_DOUBLE_FILE);
}

std::string MqDoubleWithoutMqbackPath() {
    return PathOnSystem(MQAMOD_MQ_DOUBLE_WITHOUT_MQBACK_FILE);
}

void ModuleFixture::SetUp() {
    for (const char* variable : {"MQSERVER", "MQCHLLIB", "MQCHLTAB", "MQCCDTURL"})
        platform::SetEnvironment(variable, "");
    platform::SetEnvironment("MQAMOD_MQ_LIBRARY", MqDoublePath());
    ASSERT_EQ(mq.Bind(MqDoublePath()), "");
    LoadAnotherModule();
}

void ModuleFixture::LoadAnotherModule() {
    UnloadModule();
    std::string reason;
    module = platform::OpenLibrary(ModuleFile(), reason);
    ASSERT_NE(module, nullptr) << reason;
    const auto entryPoint = reinterpret_cast<PIDMMainFunction>(platform::FindFunction(module, "PIDMMain"));
    ASSERT_NE(entryPoint, nullptr) << "the module does not export PIDMMain";
    UseEntryPoint(entryPoint);
}

void ModuleFixture::UnloadModule() {
    if (module == nullptr) return;
    CloseForgottenStreams();
    if (!kKeepModulesLoaded) {
        EXPECT_TRUE(platform::CloseLibrary(module, ModulePath()))
            << "the next test would find this one's state";
    }
    module = nullptr;
}

ModuleFixture::~ModuleFixture() {
    UnloadModule();
}

void ModuleFixture::TearDown() {
    CloseForgottenStreams();
}

void ModuleFixture::InitAndOpen(const std::string& keywords) {
    ASSERT_TRUE(Succeeds(Init(std::string(kRequired) + " " + keywords)));
    ASSERT_TRUE(Succeeds(Open()));
}

void ModuleFixture::InitTraced(int level, const std::string& keywords) {
    const std::string traced = " -TRCL " + std::to_string(level) + " trace.txt ";
    ASSERT_TRUE(Succeeds(Init(kRequired + traced + keywords)));
    trace.Skip();
}

void ModuleFixture::InitAndOpenTraced(int level, const std::string& keywords) {
    ASSERT_NO_FATAL_FAILURE(InitTraced(level, keywords));
    ASSERT_TRUE(Succeeds(Open()));
    trace.Skip();
}

std::vector<std::string> ModuleFixture::ReadAll(std::size_t limit) {
    std::vector<std::string> records;
    while (records.size() < limit) {
        const ReadOutcome outcome = Read();
        if (outcome.returnCode != pmrcOK) break;
        records.push_back(outcome.record);
    }
    return records;
}
