// SPDX-License-Identifier: Apache-2.0

// libFuzzer's entry points for the harnesses that do not use the module.
#include <cstdint>

#include "fuzz/harness.h"
#include "fuzz/work_folder.h"

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerInitialize(int*, char***) {
    MakeWorkFolder();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    EnterWorkFolder();
    RunInput({data, size});
    LeaveWorkFolder();
    return 0;
}
