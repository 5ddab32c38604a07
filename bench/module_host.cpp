// SPDX-License-Identifier: Apache-2.0
#include "bench/module_host.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

PIDMMainFunction pidmMain;
std::vector<char> record(16777216);

[[noreturn]] void Stop(const char* what, const char* error) {
    (void)std::fprintf(stderr, "%s: %s\n", what, error);
    std::exit(1);
}

void Require(std::uint32_t option, const char* name, void* data) {
    RequestBlock request = {};
    request.OptCode = option;
    pidmMain(&request, data);
    if (request.ReturnCode != pmrcOK)
        Stop(name, request.ErrorText != nullptr ? request.ErrorText : "no error text");
}

}  // namespace

void LoadModule(const char* modulePath, const char* mqLibraryPath) {
    setenv("MQAMOD_MQ_LIBRARY", mqLibraryPath, 1);
    void* module = dlopen(modulePath, RTLD_NOW);
    if (module == nullptr) Stop("the module cannot be loaded", dlerror());
    pidmMain = reinterpret_cast<PIDMMainFunction>(dlsym(module, "PIDMMain"));
}

void StartLoad(const std::string& keywords) {
    InitBlock init = {};
    init.firstVersion = MQAMOD_FIRST_INTERFACE_VERSION;
    init.secondVersion = MQAMOD_SECOND_INTERFACE_VERSION;
    init.initStringLength = static_cast<std::int32_t>(keywords.size());
    init.initString = keywords.data();
    Require(pmiPIDMOptInit, "Init", &init);
    OpenBlock open = {};
    open.openMode = MQAMOD_OPEN_FOR_READING;
    Require(pmiPIDMOptOpen, "Open", &open);
}

void GoBackToFirstCheckpoint() {
    const PositionData position = {.CkPtSeq = 1, .CkPtMsgCount = 0, .CkPtOffset = 0};
    PositionBlock block = {};
    block.positionLength = sizeof position;
    block.position = &position;
    Require(pmiPIDMOptSetPos, "SetPos", &block);
}

void RequestCheckpoint() {
    PositionBlock position = {};
    Require(pmiPIDMOptGetPos, "GetPos", &position);
}

std::uint32_t ReadOne() {
    ReadBlock read = {};
    read.recordBuffer = record.data();
    Require(pmiPIDMOptRead, "Read", &read);
    return read.recordLength;
}

void EndLoad() {
    Require(pmiPIDMOptClose, "Close", nullptr);
    ShutBlock shut = {};
    Require(pmiPIDMOptShut, "Shut", &shut);
}
