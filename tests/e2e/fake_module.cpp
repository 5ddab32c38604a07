// SPDX-License-Identifier: Apache-2.0

// A module for the tests of the host. It exports PIDMMain, and keywords of its own in the initialization
// string determine what it does, so that a test can reach every error path of the host.
//
//   FAKE_RECORDS n      Read returns n records ("record 1", "record 2" ...), then the end of the input
//   FAKE_RECORD_BYTES n each record is n bytes long instead, byte i of record r being (r + i) modulo 256
//   FAKE_FAIL request   the request (Init, Open, Read, GetPos, Close, Shut) fails
//   FAKE_FAIL_AT n      only the n-th of its kind fails (default: the first)
//   FAKE_ERROR text     the error text of the failure; '_' means a blank
//   FAKE_NOTICE n       the n-th Read succeeds with a warning attached
//   FAKE_CALLS file     appends a line per request to the file
//   FAKE_END code       what the read after the last record returns (default 9)
//   FAKE_PAUSE ms       every Read takes this long; FAKE_LAST_PAUSE only the one that ends the input
//   FAKE_EXIT n         Init ends the process with exit code n, as a library may
//   FAKE_REPORT_WAIT w  the report says "MQ read wait interval: w"
//
// It remembers every other keyword only for the report, which shows QMGR, CKFILE and LOG.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "mqamod.h"

namespace {

struct Fake {
    std::map<std::string, std::string> keywords;
    std::map<std::string, int> calls;
    std::string errorText;
    std::string report;
    PositionData position{};
    int records = 0;
    bool endRequested = false;
    bool knowsHostLog = false;
};

Fake& TheFake() {
    static Fake fake;
    return fake;
}

std::string Value(const std::string& keyword) {
    const auto found = TheFake().keywords.find(keyword);
    return found == TheFake().keywords.end() ? "" : found->second;
}

int Number(const std::string& keyword) {
    return std::atoi(Value(keyword).c_str());
}

void Log(const std::string& line) {
    const std::string path = Value("FAKE_CALLS");
    if (!path.empty()) std::ofstream(path, std::ios::app | std::ios::binary) << line << "\n";
}

ReturnCode Fail() {
    std::string text = Value("FAKE_ERROR");
    for (char& c : text) {
        if (c == '_') c = ' ';
    }
    TheFake().errorText = text.empty() ? "Fake module/PIDMMain(!ERROR!).  --ERROR: told to fail." : text;
    return pmrcFailure;
}

bool MustFail(const std::string& request) {
    const int call = ++TheFake().calls[request];
    const int at = Value("FAKE_FAIL_AT").empty() ? 1 : Number("FAKE_FAIL_AT");
    return Value("FAKE_FAIL") == request && call == at;
}

ReturnCode Init(const InitBlock* block) {
    std::istringstream words(
        std::string(block->initString, static_cast<std::size_t>(block->initStringLength)));
    std::string keyword;
    for (std::string word; words >> word;) {
        if (word[0] == '-') {
            keyword = word.substr(1);
            TheFake().keywords[keyword] = "";  // what comes later counts
        } else {
            std::string& value = TheFake().keywords[keyword];
            value += value.empty() ? word : " " + word;
        }
    }
    if (!Value("FAKE_EXIT").empty()) std::_Exit(Number("FAKE_EXIT"));
    Log("Init " + std::string(block->initString, static_cast<std::size_t>(block->initStringLength)));
    std::string& report = TheFake().report;
    report =
        "MQ_ACCESSMODULE: ZBQ19080 Fake module, Version 1\n"
        "MQ_ACCESSMODULE: ZBQ19087 MQAM Parameters in effect:\n"
        "     .           Queue Manager Name: '" +
        Value("QMGR") + "'\n";
    report += Value("CKFILE").empty()
                  ? "     .           Checkpoint: None.\n"
                  : "     .           Checkpoint: File-based to pathname " + Value("CKFILE") + "\n";
    if (TheFake().keywords.contains("MQEX")) {
        report +=
            "     .           Terminate on duplicate message: yes\n"
            "     .           Queue open: EXCLUSIVE.\n";
    }
    if (!Value("LOG").empty()) report += "     .           Logging pathname: '" + Value("LOG") + "'\n";
    if (!Value("FAKE_REPORT_WAIT").empty()) {
        report += "     .           MQ read wait interval: " + Value("FAKE_REPORT_WAIT") + "\n";
    }
    if (TheFake().keywords.contains("SRVR")) std::printf("keyword= SRVR\n");
    return MustFail("Init") ? Fail() : pmrcOK;
}

ReturnCode Open(OpenBlock* block) {
    std::printf("%s", TheFake().knowsHostLog ? TheFake().report.c_str() : "fake module: keyword help\n");
    std::fflush(stdout);
    Log("Open " + std::to_string(block->openMode));
    if (block->openMode != MQAMOD_OPEN_FOR_READING || MustFail("Open")) return Fail();
    block->maxRecordBytes = 1048576;
    return pmrcOK;
}

ReturnCode Read(ReadBlock* block) {
    Log("Read");
    Fake& fake = TheFake();
    if (MustFail("Read")) return Fail();
    std::this_thread::sleep_for(std::chrono::milliseconds(Number("FAKE_PAUSE")));
    if (fake.calls["Read"] == Number("FAKE_NOTICE")) {
        fake.errorText = "Fake module/WriteLogRec(info).  --ERROR: continuing without Log.";
    }
    block->recordLength = 0;
    if (fake.endRequested) return pmrcEOF;
    if (fake.records == Number("FAKE_RECORDS")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(Number("FAKE_LAST_PAUSE")));
        return Value("FAKE_END").empty() ? pmrcEOF : Number("FAKE_END");
    }
    ++fake.records;
    std::string record = "record " + std::to_string(fake.records);
    if (!Value("FAKE_RECORD_BYTES").empty()) {
        record.resize(static_cast<std::size_t>(Number("FAKE_RECORD_BYTES")));
        for (std::size_t i = 0; i < record.size(); ++i) {
            record[i] = static_cast<char>(static_cast<std::size_t>(fake.records) + i);
        }
    }
    std::memcpy(block->recordBuffer, record.data(), record.size());
    block->recordLength = static_cast<std::uint32_t>(record.size());
    return pmrcOK;
}

ReturnCode GetPos(PositionBlock* block) {
    Log("GetPos");
    if (MustFail("GetPos")) return Fail();
    Fake& fake = TheFake();
    ++fake.position.CkPtSeq;
    fake.position.CkPtMsgCount = fake.records;
    fake.position.CkPtOffset = 4;
    block->positionLength = MQAMOD_POSITION_BYTES;
    block->position = &fake.position;
    return pmrcOK;
}

ReturnCode PassReport(const void* value) {
    using HostLogFunction = int (*)(void* handle, int message, int first, int second, ...);
    void* handle = nullptr;
    std::memcpy(&handle, value, sizeof handle);
    const HostLogFunction* table = nullptr;
    std::memcpy(&table, static_cast<const char*>(handle) + 16, sizeof table);
    char five[5] = {};
    TheFake().knowsHostLog = true;
    const int refused = table[39](handle, 19003, 2, 3, 5, five, 5, TheFake().report.c_str(), nullptr);
    return refused == 0 ? pmrcOK : pmrcBadAttrValue;
}

ReturnCode PutAttribute(const AttributeBlock* block) {
    const std::string name = block->name;
    const std::string value(block->value, block->valueLength);
    if (name == "ZBQ_HL_LOG_HANDLE") {
        Log("PutAttribute " + name);
        return PassReport(block->value);
    }
    Log("PutAttribute " + name + "=" + value);
    if (name == "GEN_EOF") TheFake().endRequested = true;
    if (name == "UNKNOWN") return pmrcBadAttrName;
    if (name == "PRESERVE_RESTART_INFO" && value != "YES") return pmrcBadAttrValue;
    return pmrcOK;
}

ReturnCode Answer(const std::string& request) {
    Log(request);
    return MustFail(request) ? Fail() : pmrcOK;
}

ReturnCode Dispatch(std::uint32_t option, void* data) {
    switch (option) {
        case pmiPIDMOptInit: return Init(static_cast<InitBlock*>(data));
        case pmiPIDMOptOpen: return Open(static_cast<OpenBlock*>(data));
        case pmiPIDMOptRead: return Read(static_cast<ReadBlock*>(data));
        case pmiPIDMOptGetPos: return GetPos(static_cast<PositionBlock*>(data));
        case pmiPIDMOptPutAttr: return PutAttribute(static_cast<AttributeBlock*>(data));
        case pmiPIDMOptClose: return Answer("Close");
        case pmiPIDMOptShut: return Answer("Shut");
        default: return pmrcNotSupported;
    }
}

}  // namespace

#if defined(_WIN32)
#define FAKE_EXPORT __declspec(dllexport)
#else
#define FAKE_EXPORT __attribute__((visibility("default")))
#endif

extern "C" FAKE_EXPORT void PIDMMain(RequestBlock* request, void* data) {
    request->ReturnCode = static_cast<std::uint32_t>(Dispatch(request->OptCode, data));
    const std::string& text = TheFake().errorText;
    request->ErrorText = text.empty() ? nullptr : text.c_str();
    request->ErrorTextLength = text.empty() ? 0 : static_cast<std::uint32_t>(text.size() + 1);
}
