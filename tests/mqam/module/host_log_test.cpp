// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/host_log.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace mqam;

namespace {

using HostLogFunction = int (*)(void* handle, int message, int first, int second, ...);

HostLogFunction FindFunctionAsTheModuleDoes() {
    const char* const* table = nullptr;
    std::memcpy(&table, static_cast<const char*>(HostLogHandle()) + 16, sizeof table);
    HostLogFunction function = nullptr;
    std::memcpy(&function, reinterpret_cast<const char*>(table) + 312, sizeof function);
    return function;
}

constexpr const char* kReport =
    "MQ_ACCESSMODULE: ZBQ19080 Norvane Websphere MQ AMOD, Version 16.20.00.04\n"
    "MQ_ACCESSMODULE: ZBQ19083 Code version 16.20.00.03\n"
    "MQ_ACCESSMODULE: ZBQ19087 MQAM Parameters in effect:\n"
    "     .           Queue Manager Name: 'QM1'\n"
    "     .           Checkpoint: File-based to pathname C:\\a: b\n"
    "     .           MQ convert message data to CCSID: 1208\n"
    "\n"
    "     .           Queue open: NON-EXCLUSIVE.\n"
    "     .           A line of another kind\n";

TEST(HostLog, ReportArrivesThroughTheFunctionTable) {
    char buffer[5] = {};
    EXPECT_EQ(FindFunctionAsTheModuleDoes()(HostLogHandle(), 19003, 2, 3, 5, buffer, 5, kReport, nullptr), 0);
    EXPECT_EQ(ReceivedReport(), kReport);
}

TEST(HostLog, OtherMessagesAndHandlesAreRefused) {
    char buffer[5] = {};
    int other = 0;
    EXPECT_NE(FindFunctionAsTheModuleDoes()(HostLogHandle(), 19004, 2, 3, 5, buffer, 5, kReport, nullptr), 0);
    EXPECT_NE(FindFunctionAsTheModuleDoes()(&other, 19003, 2, 3, 5, buffer, 5, kReport, nullptr), 0);
    EXPECT_EQ(ReceivedReport(), "");
}

}  // namespace
