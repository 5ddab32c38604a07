// SPDX-License-Identifier: Apache-2.0

// Includes the public header as the only header of a C++11 program.
#include "mqamod.h"

// A host looks the entry point up at run time, so a program that includes the header need not link the module.
PIDMMainFunction ModuleEntryPoint(void* address);

PIDMMainFunction ModuleEntryPoint(void* address) {
    return reinterpret_cast<PIDMMainFunction>(address);
}
