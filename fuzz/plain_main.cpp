// SPDX-License-Identifier: Apache-2.0

// Contains libFuzzer's entry points for the harnesses that do not use the module.
#include <cstdint>

#include "fuzz/harness.h"
#include "fuzz/work_directory.h"

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerInitialize(int*, char***) {
    MakeWorkDirectory();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    EnterWorkDirectory();
    RunInput({data, size});
    LeaveWorkDirectory();
    return 0;
}
