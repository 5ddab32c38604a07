// SPDX-License-Identifier: Apache-2.0
#include "params/parameter_report.h"

#include "diag/message_text.h"
#include "diag/report_texts.h"
#include "diag/trace.h"
#include "mqi/client_channel.h"
#include "params/settings.h"

namespace mqamod {

namespace {

void TraceJobEvent(const char* text) {
    TraceLine(TraceLevel::kJobEvents, Severity::kInfo, "ParseParms", text);
}

void Report(const char* text) {
    TraceJobEvent(text);
    AddParameterLine(text);
}

void ReportCheckpoint(const Settings& settings) {
    if (settings.MqCheckpointMode) {
        Report("Checkpoint: MQ based.");
    } else if (!settings.CKFILE) {
        Report("Checkpoint: None.");
    } else {
        Report(FormatText("Checkpoint: File-based to pathname %s", settings.checkpointPath));
    }
}

void ReportLogging(const Settings& settings) {
    if (!settings.LOG) {
        Report("Logging: none");
        return;
    }
    Report(FormatText("Logging pathname: '%s'", settings.logPath));
    Report(settings.TLF ? "Terminate on Log failure: yes" : "Terminate on Log failure: no");
}

// The line for a CCSID ends with a newline of its own, which leaves an empty line in the report.
void ReportConversion(const Settings& settings) {
    if (settings.CONVERT == 0) {
        Report("MQ convert message data: no");
    } else if (settings.CONVERT == 1) {
        Report("MQ convert message data: yes");
    } else {
        Report(FormatText("MQ convert message data to CCSID: %d\n", settings.CONVERT));
    }
}

void ReportOpenTiming(const Settings& settings) {
    Report(FormatText("MQ open retry tenacity: %d", static_cast<int>(settings.OTENACITY)));
    Report(FormatText("MQ open wait interval: %d", static_cast<int>(settings.OWAIT)));
}

void ReportReadWait(const Settings& settings) {
    if (settings.RWAIT == kUnlimitedWait) {
        Report("MQ read wait interval: indefinite");
    } else {
        Report(FormatText("MQ read wait interval: %d", settings.RWAIT / 1000));
    }
}

}  // namespace

void ReportParametersInEffect() {
    const Settings& settings = Setting();
    AddNumberedLine(19087, "MQAM Parameters in effect:");
    AddParameterLine(FormatText("Queue Manager Name: '%s'", settings.QMGR));
    Report(FormatText("Queue Name: '%s'", settings.QNM));
    ReportCheckpoint(settings);
    Report(settings.FLUSH ? "Media flush: Yes" : "Media flush: No");
    ReportLogging(settings);
    Report(settings.TDM ? "Terminate on duplicate message: yes" : "Terminate on duplicate message: no");
    ReportConversion(settings);
    Report(settings.MQEX ? "Queue open: EXCLUSIVE." : "Queue open: NON-EXCLUSIVE.");
    Report(FormatText("BlockSize: %d", settings.BKSZ));
    ReportOpenTiming(settings);
    ReportReadWait(settings);

    const MQCD& channel = *ClientChannel();
    TraceJobEvent(FormatText("Channel name: '%.*s'", static_cast<int>(sizeof channel.ChannelName),
                             channel.ChannelName));
    TraceJobEvent(FormatText("Server name: '%.*s'", static_cast<int>(sizeof channel.ConnectionName),
                             channel.ConnectionName));
}

}  // namespace mqamod
