#include "diag/identification.h"

#include <cstdio>

#include "diag/report_texts.h"
#include "diag/trace.h"
#include "platform/os.h"

// The numbers jump from 19081 to 19083; hosts know them as they are.
void ShowModuleID() {
    constexpr char kFunction[] = "ShowModuleID";
    constexpr char kHeaderVersion[] = "%s: '%s' - packing '%s'";
    TakeReportTime();
    ReportLine(19080, kFunction, FormatUntracedLine("%s, Version %s", kModuleId, kModuleVersion));
    ReportLine(
        19081, kFunction,
        FormatUntracedLine("Free software under the Apache License 2.0, without warranty of any kind"));
    ReportLine(19083, kFunction, FormatUntracedLine("Code version %s", kCodeVersion));
    ReportLine(19084, kFunction, FormatUntracedLine("Compiled for %s", kBuildTarget));
    ReportLine(
        19085, kFunction,
        FormatUntracedLine(kHeaderVersion, "pmdcomt_HeaderVersion", "Common 15.10.00.00", "pack (push, 1)"));
    ReportLine(19086, kFunction,
               FormatUntracedLine(kHeaderVersion, "pmddamt_HeaderVersion", "Common 16.20.00.00", "none"));
    if (std::FILE* file = TraceFile()) (void)std::fflush(file);
}
