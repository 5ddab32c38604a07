// SPDX-License-Identifier: Apache-2.0

// Tests the stand-in with files of any name and content where queue managers, queues, descriptors and units
// of work are expected, and with MQI calls in any order. Between the calls the directory changes as if other
// programs used it. The input describes all of this.
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/mqi_block.h"
#include "fuzz/spool_tree.h"
#include "spoolmq/base/mqi_server.h"

extern "C" {
void MQCONN(MQCHAR* QMgrName, MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason);
void MQPUT(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR PutMsgOpts, MQLONG BufferLength, MQPTR Buffer,
           MQLONG* CompCode, MQLONG* Reason);
void MQPUT1(MQHCONN Hconn, MQPTR ObjDesc, MQPTR MsgDesc, MQPTR PutMsgOpts, MQLONG BufferLength, MQPTR Buffer,
            MQLONG* CompCode, MQLONG* Reason);
void MQINQ(MQHCONN Hconn, MQHOBJ Hobj, MQLONG SelectorCount, MQLONG* Selectors, MQLONG IntAttrCount,
           MQLONG* IntAttrs, MQLONG CharAttrLength, MQCHAR* CharAttrs, MQLONG* CompCode, MQLONG* Reason);
}

namespace {

constexpr int kMostSteps = 60;

// The program's handles. The first connection belongs to the thread, the others are shareable.
struct Program {
    std::vector<MQHCONN> connections;
    std::vector<MQHOBJ> objects;
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
};
Program program;

MQHCONN AnyConnection(std::uint8_t kind) {
    return program.connections.empty() ? 7 : program.connections[kind % program.connections.size()];
}

MQHOBJ AnyObject(std::uint8_t kind) {
    return program.objects.empty() ? 9 : program.objects[kind % program.objects.size()];
}

void CheckOutcome() {
    const bool isFailure = program.compCode == MQCC_WARNING || program.compCode == MQCC_FAILED;
    Require(program.compCode == MQCC_OK || isFailure, "the completion code is one of MQ's three");
    Require(isFailure == (program.reason != MQRC_NONE), "a failure has a reason and a success none");
    Require(program.reason != mqi::MQRC_UNEXPECTED_ERROR || isFailure, "no exception is taken for a success");
}

std::string ObjectName(ByteReader& input, const char* usual) {
    const std::uint8_t length = input.Byte();
    return length == 0 ? usual : input.Bytes(length % 64U);
}

void Connect(ByteReader& input) {
    if (program.connections.size() == 4) return;
    const std::uint8_t kind = input.Byte();
    std::string name = (kind & 1U) != 0 ? ObjectName(input, "") : "QM";
    name.resize(48, ' ');
    MqiBlock cno("CNO ", {12, 24}, kind);
    cno.SetField(offsetof(mqi::MQCNO, Options),
                 (kind & 2U) != 0 ? input.Number<MQLONG>()
                                  : (program.connections.empty() ? 0 : mqi::MQCNO_HANDLE_SHARE_BLOCK));
    MQHCONN handle = mqi::MQHC_UNUSABLE_HCONN;
    if ((kind & 4U) != 0) {
        MQCONN(name.data(), &handle, &program.compCode, &program.reason);
    } else {
        MQCONNX(name.data(), cno.As<::MQCNO>(), &handle, &program.compCode, &program.reason);
    }
    CheckOutcome();
    if (program.compCode == MQCC_OK) program.connections.push_back(handle);
}

void OpenUsually(ByteReader& input) {
    MqiBlock od("OD  ", {168, 208, 344, 424}, 0);
    od.SetField(offsetof(mqi::MQOD, ObjectType), mqi::MQOT_Q);
    od.SetText(offsetof(mqi::MQOD, ObjectName), 48, "Q");
    MQHOBJ handle = mqi::MQHO_UNUSABLE_HOBJ;
    const MQLONG options = MQOO_INPUT_AS_Q_DEF | mqi::MQOO_BROWSE | mqi::MQOO_OUTPUT | mqi::MQOO_INQUIRE;
    MQOPEN(AnyConnection(input.Byte()), od.As<void>(), options, &handle, &program.compCode, &program.reason);
    CheckOutcome();
    if (program.compCode != MQCC_FAILED) program.objects.push_back(handle);
}

void Open(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    MqiBlock od("OD  ", {168, 208, 344, 424}, kind);
    od.SetField(offsetof(mqi::MQOD, ObjectType), (kind & 4U) != 0 ? mqi::MQOT_Q_MGR : mqi::MQOT_Q);
    od.SetText(offsetof(mqi::MQOD, ObjectName), 48, ObjectName(input, "Q"));
    od.SetText(offsetof(mqi::MQOD, ObjectQMgrName), 48, (kind & 8U) != 0 ? ObjectName(input, "QM") : "");
    MQHOBJ handle = mqi::MQHO_UNUSABLE_HOBJ;
    const auto options = static_cast<MQLONG>(input.Number<std::uint16_t>());
    MQOPEN(AnyConnection(kind), od.As<void>(), options, &handle, &program.compCode, &program.reason);
    CheckOutcome();
    if (program.compCode != MQCC_FAILED) program.objects.push_back(handle);
}

MqiBlock Descriptor(ByteReader& input, std::uint8_t kind) {
    MqiBlock md("MD  ", {324, 364}, kind);
    const mqi::MQMD defaults = mqi::MqmdDefault();
    md.SetBytes(8, reinterpret_cast<const char*>(&defaults) + 8);
    if ((kind & 0x40U) != 0) {
        const std::uint8_t offset = input.Byte();
        md.SetSome(8 + offset, input.Bytes(input.Byte()));
    }
    return md;
}

void Get(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    MqiBlock md = Descriptor(input, kind);
    MqiBlock gmo("GMO ", {72, 80, 100, 112}, kind / 2U);
    gmo.SetField(offsetof(mqi::MQGMO, Options),
                 (kind & 0x80U) != 0 ? input.Number<MQLONG>() & 0x1FFFFFFF : MQGMO_SYNCPOINT);
    gmo.SetField(offsetof(mqi::MQGMO, WaitInterval), MQLONG{kind / 8 % 2});
    const auto length = static_cast<MQLONG>(input.Byte());
    MqiBlock buffer(static_cast<std::size_t>(length));
    MQLONG dataLength = -1;
    MQGET(AnyConnection(kind / 16U), AnyObject(input.Byte()), md.As<void>(), gmo.As<void>(), length,
          buffer.As<void>(), &dataLength, &program.compCode, &program.reason);
    CheckOutcome();
    if (program.compCode == MQCC_OK) Require(dataLength >= 0 && dataLength <= length, "the message fits");
}

void Put(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    MqiBlock md = Descriptor(input, kind);
    MqiBlock pmo("PMO ", {128, 160, 184}, kind / 2U);
    pmo.SetField(offsetof(mqi::MQPMO, Options),
                 (kind & 0x80U) != 0 ? input.Number<MQLONG>() : mqi::MQPMO_SYNCPOINT);
    const std::string body = input.Bytes(input.Byte());
    MqiBlock buffer(body.size());
    buffer.SetSome(0, body);
    const auto length = static_cast<MQLONG>(body.size());
    if ((kind & 4U) != 0) {
        MqiBlock od("OD  ", {168, 208, 344, 424}, kind / 8U);
        od.SetField(offsetof(mqi::MQOD, ObjectType), mqi::MQOT_Q);
        od.SetText(offsetof(mqi::MQOD, ObjectName), 48, ObjectName(input, "Q"));
        MQPUT1(AnyConnection(kind / 16U), od.As<void>(), md.As<void>(), pmo.As<void>(), length,
               buffer.As<void>(), &program.compCode, &program.reason);
    } else {
        MQPUT(AnyConnection(kind / 16U), AnyObject(input.Byte()), md.As<void>(), pmo.As<void>(), length,
              buffer.As<void>(), &program.compCode, &program.reason);
    }
    CheckOutcome();
}

void Commit(ByteReader& input) {
    MQCMIT(AnyConnection(input.Byte()), &program.compCode, &program.reason);
    CheckOutcome();
}

void BackOut(ByteReader& input) {
    MQBACK(AnyConnection(input.Byte()), &program.compCode, &program.reason);
    CheckOutcome();
}

void Inquire(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    std::array<MQLONG, 4> selectors = {3, 17, 2016, input.Number<MQLONG>()};
    const auto count = static_cast<MQLONG>(kind % 5U);
    MqiBlock numbers(kind / 8U % 4U * sizeof(MQLONG));
    MqiBlock text(input.Byte());
    MQINQ(AnyConnection(kind), AnyObject(input.Byte()), count, selectors.data(),
          static_cast<MQLONG>(numbers.Size() / sizeof(MQLONG)), numbers.As<MQLONG>(),
          static_cast<MQLONG>(text.Size()), text.As<MQCHAR>(), &program.compCode, &program.reason);
    CheckOutcome();
}

void Close(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    MQHOBJ handle = AnyObject(kind);
    MQCLOSE(AnyConnection(kind / 16U), &handle, MQCO_NONE, &program.compCode, &program.reason);
    CheckOutcome();
}

void DisconnectOne(std::size_t index) {
    MQHCONN handle = program.connections[index];
    program.connections.erase(program.connections.begin() + static_cast<std::ptrdiff_t>(index));
    MQDISC(&handle, &program.compCode, &program.reason);
    CheckOutcome();
}

void Disconnect(ByteReader& input) {
    const std::uint8_t kind = input.Byte();
    if (!program.connections.empty()) DisconnectOne(kind % program.connections.size());
}

constexpr void (*kSteps[])(ByteReader&) = {MakeSpoolFile,
                                           MakeSpoolFile,
                                           MakeSpoolFile,
                                           MakeSpoolDirectory,
                                           RemoveSpoolEntry,
                                           MoveSpoolEntry,
                                           Connect,
                                           OpenUsually,
                                           Open,
                                           Get,
                                           Get,
                                           Put,
                                           Commit,
                                           BackOut,
                                           Inquire,
                                           Close,
                                           Disconnect};

// These steps were added after the corpus was made. They have numbers of their own, so that the inputs of the
// corpus keep their meaning.
constexpr std::uint8_t kRareStep = 255;
constexpr void (*kRareSteps[])(ByteReader&) = {MakeSpoolPipe, CutSpoolFile};

void TakeStep(ByteReader& input) {
    const std::uint8_t step = input.Byte();
    if (step == kRareStep)
        kRareSteps[input.Byte() % std::size(kRareSteps)](input);
    else
        kSteps[step % std::size(kSteps)](input);
}

}  // namespace

void RunInput(ByteReader input) {
    program = {};
    MakeSpool();
    for (int i = 0; i < kMostSteps && !input.Empty(); ++i)
        TakeStep(input);
    while (!program.connections.empty())
        DisconnectOne(0);
}
