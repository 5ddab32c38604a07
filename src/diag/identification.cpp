// SPDX-License-Identifier: Apache-2.0
#include "diag/identification.h"

#include <cstdio>

#include "diag/module_id.h"
#include "diag/report_texts.h"
#include "diag/trace.h"
#include "platform/os.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "ShowModuleID";

// Writes one line of the identification. It does not flush the trace file, because ShowModuleID does so once,
// after the last line.
void ReportLine(int number, const char* text) {
    if (std::FILE* file = TraceFile()) {
        WriteTraceStamp();
        (void)std::fprintf(file, "%s(info): %s\n", kFunction, text);
    } else {
        AddNumberedLine(number, text);
    }
}

}  // namespace

// Hosts know the numbers of the lines, so they are fixed. No line has the number 19082.
void ShowModuleID() {
    constexpr char kHeaderVersion[] = "%s: '%s' - packing '%s'";
    ReadReportTime();
    ReportLine(19080, FormatUntracedLine("%s, Version %s", kModuleId, kModuleVersion));
    ReportLine(19081, FormatUntracedLine(
                          "Free software under the Apache License 2.0, without warranty of any kind"));
    ReportLine(19083, FormatUntracedLine("Code version %s", kCodeVersion));
    ReportLine(19084, FormatUntracedLine("Compiled for %s", kBuildTarget));
    ReportLine(19085, FormatUntracedLine(kHeaderVersion, "pmdcomt_HeaderVersion", "Common 15.10.00.00",
                                         "pack (push, 1)"));
    ReportLine(19086,
               FormatUntracedLine(kHeaderVersion, "pmddamt_HeaderVersion", "Common 16.20.00.00", "none"));
    if (std::FILE* file = TraceFile()) (void)std::fflush(file);
}

}  // namespace mqamod
