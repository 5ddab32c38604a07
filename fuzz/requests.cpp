// SPDX-License-Identifier: Apache-2.0

// Sends the requests that the input lists, with their data. The outcomes of the MQ calls that they cause are
// in the input, too. Files change while the module uses them, the clock jumps, and several processes use the
// same files, one after the other.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

#include "fuzz/clock.h"
#include "fuzz/harness.h"
#include "fuzz/host.h"
#include "fuzz/module_session.h"
#include "fuzz/mq_script.h"
#include "fuzz/work_directory.h"

namespace {

constexpr int kMostRequests = 200;

// The positions that the host has received and may send with SetPos.
std::array<PositionData, 4> given;
std::size_t givenCount;

// The host's log object. It points to a table of functions, one of which is the log function.
struct HostLogObject {
    char host[16];
    const void* table;
};
struct HostLogTable {
    char host[312];
    int (*log)(void* handle, int messageNumber, int, int, ...);
};
static_assert(offsetof(HostLogObject, table) == 16 && offsetof(HostLogTable, log) == 312);

int TakeLog(void*, int, int, int, ...) {
    return 0;
}
int RefuseLog(void*, int, int, int, ...) {
    return 1;
}

std::string LogHandle(std::uint8_t kind) {
    static const HostLogTable kTables[] = {{{}, TakeLog}, {{}, RefuseLog}, {{}, nullptr}};
    static const HostLogObject kObjects[] = {
        {{}, &kTables[0]}, {{}, &kTables[1]}, {{}, &kTables[2]}, {{}, nullptr}};
    const void* object = &kObjects[kind % std::size(kObjects)];
    std::string handle(reinterpret_cast<const char*>(&object), sizeof object);
    handle.resize(sizeof object + kind % 3U, '\0');
    // A truncated handle becomes zero. Any other value would be an address that no host owns.
    if (kind >= 128) handle.assign(kind % sizeof object, '\0');
    return handle;
}

void InitFromParts(ByteReader& input) {
    static constexpr const char* kParts[] = {
        " CKFILE ck", " LOG log",       " TRCL 4 trace", " TDM no",    " TLF no",
        " RWAIT -1",  " BKSZ 100",      " CONVERT 1208", " MQEX",      " OTENACITY 6000 OWAIT 1",
        " FLUSH T",   " SRVR s CHNL c", " BKSZ 0",       " TRCL 2 ck", " BKSZ 1048576"};
    const auto chosen = input.Number<std::uint16_t>();
    std::string initString = "QMGR M QNM Q BKSZ 40";  // large buffers cost time
    for (std::size_t i = 0; i < std::size(kParts); ++i) {
        if ((chosen >> i & 1U) != 0) initString += kParts[i];
    }
    (void)HostInit(initString);
}

void InitFromBytes(ByteReader& input) {
    const std::string initString = input.Bytes(input.Byte());
    (void)HostInit(initString, initString.size() == 1 ? 1000 : MQAMOD_FIRST_INTERFACE_VERSION);
}

void InitNowhere(ByteReader& input) {
    (void)HostInitNowhere(-static_cast<std::int32_t>(input.Byte()));
}

void Open(ByteReader&) {
    (void)HostOpen();
}

void OpenOddly(ByteReader& input) {
    const auto mode = input.Number<std::int8_t>();
    (void)HostOpen(mode, input.Byte());
}

void Read(ByteReader&) {
    (void)HostRead();
}

void GetPos(ByteReader&) {
    const Position position = HostGetPos();
    if (position.data.has_value()) given.at(givenCount++ % given.size()) = *position.data;
}

void SetPosGiven(ByteReader& input) {
    (void)HostSetPos(given.at(input.Byte() % given.size()));
}

void SetPosAnywhere(ByteReader& input) {
    (void)HostSetPos(input.Bytes(input.Byte() % 20U));
}

void Close(ByteReader&) {
    (void)HostClose();
}

void Shut(ByteReader& input) {
    (void)HostShut(input.Byte());
}

void Identify(ByteReader&) {
    (void)HostIdentify();
}

void AnyOption(ByteReader& input) {
    // The remaining options are Write, close/rewind, and numbers that are not options.
    static constexpr std::uint32_t kOptions[] = {0, pmiPIDMOptWrite, pmiPIDMOptCloseR, 15, 255, 0xFFFFFFFF};
    (void)HostOption(kOptions[input.Byte() % std::size(kOptions)]);
}

void PutAttribute(ByteReader& input) {
    static constexpr const char* kNames[] = {"GEN_EOF", "PRESERVE_RESTART_INFO", "TIMEOUT_SECONDS",
                                             "CHARSET_NAME"};
    static constexpr const char* kValues[] = {"YES", "NO", "1", "-1", "0", "2147483648", "YESx"};
    const std::uint8_t kind = input.Byte();
    const char* value = kValues[kind / 16U % std::size(kValues)];
    (void)HostPutAttribute(kNames[kind % std::size(kNames)],
                           std::string(value, std::strlen(value) + (kind & 8U) / 8U));
}

void PutAttributeBytes(ByteReader& input) {
    const std::string name = input.Bytes(input.Byte());
    if (name.substr(0, name.find('\0')) == "ZBQ_HL_LOG_HANDLE") return;
    (void)HostPutAttribute(name, input.Bytes(input.Byte()));
}

void PutLogHandle(ByteReader& input) {
    (void)HostPutAttribute("ZBQ_HL_LOG_HANDLE", LogHandle(input.Byte()));
}

void GetAttribute(ByteReader& input) {
    (void)HostGetAttribute(input.Bytes(input.Byte()));
}

const char* File(std::uint8_t kind) {
    static constexpr const char* kFiles[] = {"ck", "log", "trace"};
    return kFiles[kind % std::size(kFiles)];
}

void CutFile(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    (void)!truncate(File(kind), kind / 3U);
}

void RemoveFile(ByteReader& input) {
    (void)std::remove(File(input.Byte()));
}

void MakeFile(ByteReader& input) {
    const char* name = File(input.Byte());
    WriteFile(name, input.Bytes(input.Byte()));
}

void MakeDirectory(ByteReader& input) {
    (void)mkdir(File(input.Byte()), 0700);
}

void MoveClock(ByteReader& input) {
    AdvanceClock(input.Number<std::int8_t>());
}

void BreakOrMendClock(ByteReader& input) {
    BreakClock((input.Byte() & 1U) != 0);
}

// Ends the process and begins another one, which finds only the files that the host made the module keep.
void NextLife(ByteReader& input) {
    EndModuleSession();
    PlayOutcomes(&input);
}

void Preserve(ByteReader&) {
    (void)HostPutAttribute("PRESERVE_RESTART_INFO", "YES");
}

constexpr void (*kRequests[])(ByteReader&) = {InitFromParts, InitFromBytes,
                                              InitNowhere,   Open,
                                              OpenOddly,     Read,
                                              Read,          Read,
                                              GetPos,        GetPos,
                                              SetPosGiven,   SetPosAnywhere,
                                              Close,         Shut,
                                              Identify,      AnyOption,
                                              PutAttribute,  PutAttributeBytes,
                                              PutLogHandle,  GetAttribute,
                                              CutFile,       RemoveFile,
                                              MakeFile,      MakeDirectory,
                                              MoveClock,     BreakOrMendClock,
                                              NextLife,      Preserve};

}  // namespace

void RunInput(ByteReader input) {
    // A slash would lead paths out of the work directory. It could come from an initialization string, or
    // from a log of messages that is read as a parameter file.
    std::string bytes = input.Rest();
    DropSlashes(bytes);
    ByteReader safe{reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    given = {};
    givenCount = 0;
    PlayOutcomes(&safe);
    for (int i = 0; i < kMostRequests && !safe.Empty(); ++i)
        kRequests[safe.Byte() % std::size(kRequests)](safe);
}
