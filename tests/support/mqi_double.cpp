// SPDX-License-Identifier: Apache-2.0
#include "tests/support/mqi_double.h"

#include <algorithm>
#include <cstring>

#include "platform/library.h"
#include "tests/support/mq_double_library.h"

namespace {

constexpr MQHCONN kConnection = 7;
constexpr MQHOBJ kObject = 9;
constexpr MQLONG kUnusable = -1;
constexpr std::size_t kNameBytes = 48;

MqiDouble* currentDouble = nullptr;

template <typename T>
T Next(std::deque<T>& script, const T& otherwise) {
    if (script.empty()) return otherwise;
    T outcome = script.front();
    script.pop_front();
    return outcome;
}

/// Records the call, lets the test examine it and returns the scripted answer.
MqOutcome Answer(MqCall call, std::deque<MqOutcome>& script, MQLONG* compCode, MQLONG* reason) {
    MqOutcome outcome = Next(script, MqOutcome{});
    call.compCode = outcome.compCode;
    call.reason = outcome.reason;
    currentDouble->calls.push_back(call);
    if (currentDouble->hook) currentDouble->hook(call);
    if (outcome.effect) outcome.effect();
    *compCode = outcome.compCode;
    *reason = outcome.reason;
    return outcome;
}

void Connx(MQCHAR* QMgrName, MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    MqCall call;
    call.verb = Verb::Connx;
    call.connection = *Hconn;
    call.queueManager.assign(QMgrName, kNameBytes);
    call.connectOptions = *ConnectOpts;
    call.hasChannel = ConnectOpts->Version >= MQCNO_VERSION_2 && ConnectOpts->ClientConnPtr != nullptr;
    if (call.hasChannel) call.channel = *static_cast<const MQCD*>(ConnectOpts->ClientConnPtr);
    const MqOutcome outcome = Answer(call, currentDouble->onConnx, CompCode, Reason);
    if (outcome.handle || outcome.compCode != MQCC_FAILED) *Hconn = outcome.handle.value_or(kConnection);
}

void Open(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode, MQLONG* Reason) {
    MqCall call;
    call.verb = Verb::Open;
    call.connection = Hconn;
    call.object = *Hobj;
    call.options = Options;
    call.objectDescriptor = *static_cast<const MQOD*>(ObjDesc);
    const MqOutcome outcome = Answer(call, currentDouble->onOpen, CompCode, Reason);
    if (outcome.handle || outcome.compCode != MQCC_FAILED) *Hobj = outcome.handle.value_or(kObject);
    if (!outcome.objectName.empty()) {
        auto& name = static_cast<MQOD*>(ObjDesc)->ObjectName;
        std::memset(name, ' ', sizeof name);
        std::memcpy(name, outcome.objectName.data(), std::min(outcome.objectName.size(), sizeof name));
    }
}

void Get(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength, MQPTR Buffer,
         MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    MqGetOutcome outcome =
        currentDouble->onGet.empty() ? currentDouble->emptyQueue : currentDouble->onGet.front();
    const auto room = static_cast<std::size_t>(std::max(BufferLength, 0));
    const bool truncated = outcome.compCode == MQCC_OK && outcome.bytes.size() > room;
    // As with a queue manager, a message that does not fit is returned in part and stays on the queue.
    if (truncated) outcome.compCode = MQCC_WARNING, outcome.reason = MQRC_TRUNCATED_MSG_FAILED;
    if (!currentDouble->onGet.empty() && !truncated) currentDouble->onGet.pop_front();

    MqCall call;
    call.verb = Verb::Get;
    call.connection = Hconn;
    call.object = Hobj;
    call.descriptor = *static_cast<const MQMD*>(MsgDesc);
    call.getOptions = *static_cast<const MQGMO*>(GetMsgOpts);
    call.bufferLength = BufferLength;
    call.buffer = Buffer;
    call.compCode = outcome.compCode;
    call.reason = outcome.reason;
    currentDouble->calls.push_back(call);
    if (currentDouble->hook) currentDouble->hook(call);
    if (outcome.effect) outcome.effect();

    std::memcpy(Buffer, outcome.bytes.data(), std::min(outcome.bytes.size(), room));
    if (!outcome.leaveDataLength)
        *DataLength = outcome.dataLength.value_or(static_cast<MQLONG>(outcome.bytes.size()));
    if (outcome.compCode != MQCC_FAILED) {
        auto* descriptor = static_cast<MQMD*>(MsgDesc);
        std::memset(descriptor->MsgId, 0x4D, sizeof descriptor->MsgId);
        std::memset(descriptor->CorrelId, 0x43, sizeof descriptor->CorrelId);
        descriptor->BackoutCount = outcome.backoutCount;
        descriptor->Encoding = outcome.encoding;
        descriptor->CodedCharSetId = outcome.codedCharSetId;
    }
    *CompCode = outcome.compCode;
    *Reason = outcome.reason;
}

void Cmit(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    MqCall call;
    call.verb = Verb::Cmit;
    call.connection = Hconn;
    Answer(call, currentDouble->onCmit, CompCode, Reason);
}

void Back(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    MqCall call;
    call.verb = Verb::Back;
    call.connection = Hconn;
    Answer(call, currentDouble->onBack, CompCode, Reason);
}

void Close(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode, MQLONG* Reason) {
    MqCall call;
    call.verb = Verb::Close;
    call.connection = Hconn;
    call.object = *Hobj;
    call.options = Options;
    // The handle of a closed object becomes unusable, as with a queue manager.
    if (Answer(call, currentDouble->onClose, CompCode, Reason).compCode != MQCC_FAILED) *Hobj = kUnusable;
}

void Disc(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    MqCall call;
    call.verb = Verb::Disc;
    call.connection = *Hconn;
    if (Answer(call, currentDouble->onDisc, CompCode, Reason).compCode != MQCC_FAILED) *Hconn = kUnusable;
}

constexpr MqDoubleFunctions kFunctions{Connx, Open, Get, Cmit, Back, Close, Disc};

const char* NameOf(Verb verb) {
    switch (verb) {
        case Verb::Connx: return "CONNX";
        case Verb::Open: return "OPEN";
        case Verb::Get: return "GET";
        case Verb::Cmit: return "CMIT";
        case Verb::Back: return "BACK";
        case Verb::Close: return "CLOSE";
        case Verb::Disc: return "DISC";
    }
    return "?";
}

}  // namespace

MqiDouble::MqiDouble() {
    currentDouble = this;
}

MqiDouble::~MqiDouble() {
    currentDouble = nullptr;
}

std::string MqiDouble::Bind(const std::string& path) {
    std::string reason;
    platform::LibraryHandle library = platform::OpenLibrary(path, reason);
    if (library == nullptr) return reason;
    auto setDouble = reinterpret_cast<SetMqDoubleFunction>(platform::FindFunction(library, "SetMqDouble"));
    if (setDouble == nullptr) return path + " does not export SetMqDouble";
    setDouble(&kFunctions);
    return "";
}

void MqiDouble::PutMessage(const std::string& bytes, MQLONG backoutCount) {
    MqGetOutcome message;
    message.bytes = bytes;
    message.backoutCount = backoutCount;
    onGet.push_back(message);
}

void MqiDouble::FailGet(MQLONG compCode, MQLONG reason, const std::string& bytes) {
    MqGetOutcome failure;
    failure.bytes = bytes;
    failure.compCode = compCode;
    failure.reason = reason;
    onGet.push_back(failure);
}

std::string MqiDouble::Sequence() const {
    std::string sequence;
    for (const MqCall& call : calls) {
        if (!sequence.empty()) sequence += ' ';
        sequence += NameOf(call.verb);
    }
    return sequence;
}

std::vector<MqCall> MqiDouble::Calls(Verb verb) const {
    std::vector<MqCall> found;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                 [verb](const MqCall& call) { return call.verb == verb; });
    return found;
}
