#include "tests/support/same_test_process.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "mqam/load/worker_process.h"

using namespace mqam;

namespace {

constexpr char kVariable[] = "MQAM_TEST_PART";

}  // namespace

std::string PartToPlay() {
    const char* part = std::getenv(kVariable);
    return part != nullptr ? part : "";
}

void GiveOutPart(const std::string& part) {
#ifdef _WIN32
    static_cast<void>(_putenv_s(kVariable, part.c_str()));
#else
    static_cast<void>(setenv(kVariable, part.c_str(), 1));
#endif
}

std::string ThisProgram() {
    return testing::internal::GetArgvs().front();
}

std::vector<std::string> ArgumentsForThisTest() {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    return {std::string("--gtest_filter=") + test->test_suite_name() + "." + test->name()};
}

void MakeThisTestTheWorker(const std::string& part) {
    std::vector<std::string> words = ArgumentsForThisTest();
    words.insert(words.begin(), ThisProgram());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    KeepArguments(static_cast<int>(arguments.size()), arguments.data());
    GiveOutPart(part);
}
