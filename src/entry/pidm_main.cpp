// The exported entry point and the dispatcher.
//
// Which request is legal when stands in one table: Init needs the module not initialized, ID needs nothing,
// every other request needs it initialized. Whether a queue is open is for the request itself to say:
//
//   state                         entered by                accepts
//   loaded                        load, Shut                Init, ID
//   initialized, queue closed     Init, also failed; Close  all but Init; Read fails without a queue
//   initialized, queue open       Open                      all but Init; a second Open fails
//     checkpoint pending          GetPos                    carried out by Read, SetPos or GetPos
//     replaying                   SetPos                    left at the end of the checkpoint file
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

namespace {

constexpr char kFunction[] = "PIDMMain";

enum class Needs { Nothing, NotInitialized, Initialized };

struct OptionRow {
    std::uint32_t first;  // the option numbers that the row serves: first to last
    std::uint32_t last;
    const char* word;  // the option in traces and messages
    Needs needs;
    void (*before)();  // done before anything is traced or checked, or null
    ReturnCode (*run)(void* data);
};

// So a refused second Init silences the trace as well, until parameters are parsed again.
void SilenceTrace() {
    SetTraceLevel(0);
}

constexpr OptionRow kOptions[] = {
    {pmiPIDMOptInit, pmiPIDMOptInit, "Init", Needs::NotInitialized, SilenceTrace, RunInit},
    {pmiPIDMOptOpen, pmiPIDMOptOpen, "Open", Needs::Initialized, PrintReport, RunOpen},
    {pmiPIDMOptClose, pmiPIDMOptClose, "Close", Needs::Initialized, nullptr, RunClose},
    {pmiPIDMOptRead, pmiPIDMOptRead, "Read", Needs::Initialized, nullptr, RunRead},
    {pmiPIDMOptWrite, pmiPIDMOptWrite, "Write", Needs::Initialized, nullptr, RunWrite},
    {pmiPIDMOptGetPos, pmiPIDMOptGetPos, "GetPos", Needs::Initialized, nullptr, RunGetPos},
    {pmiPIDMOptSetPos, pmiPIDMOptSetPos, "SetPos", Needs::Initialized, nullptr, RunSetPos},
    {pmiPIDMOptShut, pmiPIDMOptShut, "Shut", Needs::Initialized, nullptr, RunShut},
    {pmiPIDMOptID, pmiPIDMOptID, "ID", Needs::Nothing, nullptr, RunId},
    {pmiPIDMOptCloseR, pmiPIDMOptCloseR, "Close", Needs::Initialized, nullptr, RunCloseRewind},
    {pmiPIDMOptGetAttr, pmiPIDMOptGetAttr + 1, "GetAttribute", Needs::Initialized, nullptr, RunGetAttribute},
    {pmiPIDMOptPutAttr, pmiPIDMOptPutAttr + 1, "PutAttribute", Needs::Initialized, nullptr, RunPutAttribute},
};

const OptionRow* FindOption(std::uint32_t option) {
    for (const OptionRow& row : kOptions) {
        if (option >= row.first && option <= row.last) return &row;
    }
    return nullptr;
}

ReturnCode RefuseState(const char* word) {
    static constexpr const char* kStateWords[] = {"not", "already"};
    ReportError(Severity::Error, kFunction, FormatText("%s initialized", kStateWords[ModuleState()]), word);
    return pmrcFailure;
}

ReturnCode Dispatch(std::uint32_t option, void* data) {
    const OptionRow* row = FindOption(option);
    if (row == nullptr) {
        TraceLine(TraceLevel::Always, Severity::Info, kFunction,
                  FormatText("unsupported request: %d", static_cast<int>(option)));
        (void)std::fflush(nullptr);
        return pmrcNotSupported;
    }
    if (row->before != nullptr) row->before();
    if (option != pmiPIDMOptInit) TraceEntry(row->word);
    const bool initialized = ModuleState() == 1;
    if ((row->needs == Needs::Initialized && !initialized) ||
        (row->needs == Needs::NotInitialized && initialized)) {
        return RefuseState(row->word);
    }
    return row->run(data);
}

// Every call ends here: the outcome goes into the request block, and what was traced onto the disk.
void Finish(RequestBlock* request, void* data, ReturnCode rc) {
    if (rc == pmrcEOF) static_cast<ReadBlock*>(data)->recordLength = 0;
    request->ReturnCode = static_cast<std::uint32_t>(rc);
    request->ErrorText = ErrorText();
    request->ErrorTextLength = ErrorTextLength();
    TraceLine(TraceLevel::IoEvents, Severity::Info, kFunction,
              FormatText("Returning to Hostlink, rc=%d", rc));
    (void)std::fflush(nullptr);
    if (std::FILE* file = TraceFile()) (void)std::fflush(file);
}

}  // namespace

[[gnu::visibility("default")]] void PIDMMain(RequestBlock* request, void* data) {
    CheckInvariants();
    if (TakeFirstCall()) ShowModuleID();
    Finish(request, data, Dispatch(request->OptCode, data));
    CheckInvariants();
}
