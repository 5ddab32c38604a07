// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/module_process.h"

#include <cstdlib>

#include "platform/library.h"
#include "tests/support/module_fixture.h"

ModuleProcess::ModuleProcess() {
    std::string reason;
    module_ = platform::OpenLibrary(ModulePath(), reason);
    const auto entryPoint =
        module_ == nullptr ? nullptr
                           : reinterpret_cast<PIDMMainFunction>(platform::FindFunction(module_, "PIDMMain"));
    if (entryPoint == nullptr) {
        std::fprintf(stderr, "the module cannot be loaded: %s\n", reason.c_str());
        std::abort();
    }
    UseEntryPoint(entryPoint);
    recordBufferBytes = 1024;
    files_ = std::make_unique<FaultPlan>(module_);
    files_->silent = true;
    clock_ = std::make_unique<FakeClock>(module_);
}

ModuleProcess::~ModuleProcess() {
    files_->AbandonStreams();
    clock_.reset();
    files_.reset();
    EXPECT_TRUE(platform::CloseLibrary(module_, ModulePath()))
        << "the next process would find this one's state";
}
