// SPDX-License-Identifier: Apache-2.0

// The public header as the only header of a C++11 program.
#include "mqamod.h"

// Not linked: a host looks the entry point up at run time, and a reference would show up here.
PIDMMainFunction ModuleEntryPoint(void* address);

PIDMMainFunction ModuleEntryPoint(void* address) {
    return reinterpret_cast<PIDMMainFunction>(address);
}
