// SPDX-License-Identifier: Apache-2.0

// Implements the exported entry point and the dispatcher.
//
// The table of requests below says which request is legal in which phase of the module. Each request itself
// checks whether a queue is open:
//
//   phase and state               entered by                   accepts
//   kLoaded                       loading the module, Shut     Init, ID
//   kInitialized, queue closed    Init, even if failed; Close  all but Init; Read fails without a queue
//   kInitialized, queue open      Open                         all but Init; a second Open fails
//     checkpoint pending          GetPos                       carried out by Read, SetPos or GetPos
//     replaying                   SetPos                       left at the end of the checkpoint file
#include <cstdint>
#include <cstdio>

#include "diag/error_text.h"
#include "diag/identification.h"
#include "diag/message_text.h"
#include "diag/trace.h"
#include "entry/host_log.h"
#include "entry/invariants.h"
#include "entry/module_state.h"
#include "entry/requests.h"
#include "mqamod.h"

namespace mqamod {

namespace {

constexpr char kFunction[] = "PIDMMain";

// Says in which phases a request is legal.
enum class Legal { kWhenLoaded, kWhenInitialized, kAlways };

struct OptionRow {
    std::uint32_t first;  // the row serves the option numbers from first to last
    std::uint32_t last;
    const char* word;  // names the option in traces and messages
    Legal legal;
    void (*before)();  // runs before anything is traced or checked; may be null
    ReturnCode (*run)(void* data);
};

// Runs before Init is checked, so a refused second Init also silences the trace, until an Init reads
// parameters again.
void SilenceTrace() {
    SetTraceLevel(0);
}

constexpr OptionRow kOptions[] = {
    {pmiPIDMOptInit, pmiPIDMOptInit, "Init", Legal::kWhenLoaded, SilenceTrace, RunInit},
    {pmiPIDMOptOpen, pmiPIDMOptOpen, "Open", Legal::kWhenInitialized, PrintReport, RunOpen},
    {pmiPIDMOptClose, pmiPIDMOptClose, "Close", Legal::kWhenInitialized, nullptr, RunClose},
    {pmiPIDMOptRead, pmiPIDMOptRead, "Read", Legal::kWhenInitialized, nullptr, RunRead},
    {pmiPIDMOptWrite, pmiPIDMOptWrite, "Write", Legal::kWhenInitialized, nullptr, RunWrite},
    {pmiPIDMOptGetPos, pmiPIDMOptGetPos, "GetPos", Legal::kWhenInitialized, nullptr, RunGetPos},
    {pmiPIDMOptSetPos, pmiPIDMOptSetPos, "SetPos", Legal::kWhenInitialized, nullptr, RunSetPos},
    {pmiPIDMOptShut, pmiPIDMOptShut, "Shut", Legal::kWhenInitialized, nullptr, RunShut},
    {pmiPIDMOptID, pmiPIDMOptID, "ID", Legal::kAlways, nullptr, RunId},
    {pmiPIDMOptCloseR, pmiPIDMOptCloseR, "Close", Legal::kWhenInitialized, nullptr, RunCloseRewind},
    {pmiPIDMOptGetAttr, pmiPIDMOptGetAttr + 1, "GetAttribute", Legal::kWhenInitialized, nullptr,
     RunGetAttribute},
    {pmiPIDMOptPutAttr, pmiPIDMOptPutAttr + 1, "PutAttribute", Legal::kWhenInitialized, nullptr,
     RunPutAttribute},
};

const OptionRow* FindOption(std::uint32_t option) {
    for (const OptionRow& row : kOptions) {
        if (option >= row.first && option <= row.last) return &row;
    }
    return nullptr;
}

bool IsLegalNow(Legal legal) {
    if (legal == Legal::kAlways) return true;
    return legal == (ModuleState() == Phase::kLoaded ? Legal::kWhenLoaded : Legal::kWhenInitialized);
}

ReturnCode RefuseState(const char* word) {
    static constexpr const char* kStateWords[] = {"not", "already"};
    const auto index = static_cast<std::size_t>(ModuleState());
    ReportError(Severity::kError, kFunction, FormatText("%s initialized", kStateWords[index]), word);
    return pmrcFailure;
}

ReturnCode Dispatch(std::uint32_t option, void* data) {
    const OptionRow* row = FindOption(option);
    if (row == nullptr) {
        TraceLine(TraceLevel::kAlways, Severity::kInfo, kFunction,
                  FormatText("unsupported request: %d", static_cast<int>(option)));
        (void)std::fflush(nullptr);
        return pmrcNotSupported;
    }
    if (row->before != nullptr) row->before();
    if (option != pmiPIDMOptInit) TraceEntry(row->word);
    if (!IsLegalNow(row->legal)) return RefuseState(row->word);
    return row->run(data);
}

// Ends every call: stores the outcome in the request block and flushes what was traced.
void Finish(RequestBlock* request, void* data, ReturnCode rc) {
    if (rc == pmrcEOF) static_cast<ReadBlock*>(data)->recordLength = 0;
    request->ReturnCode = static_cast<std::uint32_t>(rc);
    request->ErrorText = ErrorText();
    request->ErrorTextLength = ErrorTextLength();
    TraceLine(TraceLevel::kIoEvents, Severity::kInfo, kFunction,
              FormatText("Returning to Hostlink, rc=%d", rc));
    (void)std::fflush(nullptr);
    if (std::FILE* file = TraceFile()) (void)std::fflush(file);
}

void Serve(RequestBlock* request, void* data) {
    CheckInvariants();
    if (TakeFirstCall()) ShowModuleID();
    Finish(request, data, Dispatch(request->OptCode, data));
    CheckInvariants();
}

}  // namespace

}  // namespace mqamod

[[gnu::visibility("default")]] void PIDMMain(RequestBlock* request, void* data) {
    mqamod::Serve(request, data);
}
