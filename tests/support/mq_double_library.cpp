// SPDX-License-Identifier: Apache-2.0
#include "tests/support/mq_double_library.h"

#ifdef _WIN32
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

namespace {
const MqDoubleFunctions* functions = nullptr;
}

extern "C" {

EXPORTED void SetMqDouble(const MqDoubleFunctions* table) {
    functions = table;
}

EXPORTED void MQCONNX(MQCHAR* QMgrName, MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode,
                      MQLONG* Reason) {
    functions->Connx(QMgrName, ConnectOpts, Hconn, CompCode, Reason);
}

EXPORTED void MQDISC(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    functions->Disc(Hconn, CompCode, Reason);
}

EXPORTED void MQOPEN(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode,
                     MQLONG* Reason) {
    functions->Open(Hconn, ObjDesc, Options, Hobj, CompCode, Reason);
}

EXPORTED void MQCLOSE(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode, MQLONG* Reason) {
    functions->Close(Hconn, Hobj, Options, CompCode, Reason);
}

EXPORTED void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength,
                    MQPTR Buffer, MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    functions->Get(Hconn, Hobj, MsgDesc, GetMsgOpts, BufferLength, Buffer, DataLength, CompCode, Reason);
}

EXPORTED void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    functions->Cmit(Hconn, CompCode, Reason);
}

#ifndef MQ_DOUBLE_WITHOUT_MQBACK
EXPORTED void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    functions->Back(Hconn, CompCode, Reason);
}
#endif
}
