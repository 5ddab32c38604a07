// SPDX-License-Identifier: Apache-2.0

// Exports the verbs that clients may look up and that the stand-in does not support: MQBEGIN, MQSET and those
// for subscriptions, callbacks, status and message properties. Each fails with 2298.
#include "spoolmq/base/mqi_server.h"
#include "spoolmq/mqi/verb_frame.h"

using mqi::MQHMSG;

namespace {

void Refuse(MQLONG* compCode, MQLONG* reason) {
    if (compCode != nullptr) {
        *compCode = MQCC_FAILED;
    }
    if (reason != nullptr) {
        *reason = mqi::MQRC_FUNCTION_NOT_SUPPORTED;
    }
}

}  // namespace

SPOOLMQ_EXPORT void MQBEGIN(MQHCONN /*Hconn*/, MQPTR /*BeginOptions*/, MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQSET(MQHCONN /*Hconn*/, MQHOBJ /*Hobj*/, MQLONG /*SelectorCount*/, MQLONG* /*Selectors*/,
                          MQLONG /*IntAttrCount*/, MQLONG* /*IntAttrs*/, MQLONG /*CharAttrLength*/,
                          MQCHAR* /*CharAttrs*/, MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQSTAT(MQHCONN /*Hconn*/, MQLONG /*Type*/, MQPTR /*Status*/, MQLONG* CompCode,
                           MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQCB(MQHCONN /*Hconn*/, MQLONG /*Operation*/, MQPTR /*CallbackDesc*/, MQHOBJ /*Hobj*/,
                         MQPTR /*MsgDesc*/, MQPTR /*GetMsgOpts*/, MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQCTL(MQHCONN /*Hconn*/, MQLONG /*Operation*/, MQPTR /*ControlOpts*/, MQLONG* CompCode,
                          MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQSUB(MQHCONN /*Hconn*/, MQPTR /*SubDesc*/, MQHOBJ* /*Hobj*/, MQHOBJ* /*Hsub*/,
                          MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQSUBRQ(MQHCONN /*Hconn*/, MQHOBJ /*Hsub*/, MQLONG /*Action*/, MQPTR /*SubRqOpts*/,
                            MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQCRTMH(MQHCONN /*Hconn*/, MQPTR /*CrtMsgHOpts*/, MQHMSG* /*Hmsg*/, MQLONG* CompCode,
                            MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQDLTMH(MQHCONN /*Hconn*/, MQHMSG* /*Hmsg*/, MQPTR /*DltMsgHOpts*/, MQLONG* CompCode,
                            MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQSETMP(MQHCONN /*Hconn*/, MQHMSG /*Hmsg*/, MQPTR /*SetPropOpts*/, MQPTR /*Name*/,
                            MQPTR /*PropDesc*/, MQLONG /*Type*/, MQLONG /*ValueLength*/, MQPTR /*Value*/,
                            MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQDLTMP(MQHCONN /*Hconn*/, MQHMSG /*Hmsg*/, MQPTR /*DltPropOpts*/, MQPTR /*Name*/,
                            MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQINQMP(MQHCONN /*Hconn*/, MQHMSG /*Hmsg*/, MQPTR /*InqPropOpts*/, MQPTR /*Name*/,
                            MQPTR /*PropDesc*/, MQLONG* /*Type*/, MQLONG /*ValueLength*/, MQPTR /*Value*/,
                            MQLONG* /*DataLength*/, MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQBUFMH(MQHCONN /*Hconn*/, MQHMSG /*Hmsg*/, MQPTR /*BufMsgHOpts*/, MQPTR /*MsgDesc*/,
                            MQLONG /*BufferLength*/, MQPTR /*Buffer*/, MQLONG* /*DataLength*/,
                            MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}

SPOOLMQ_EXPORT void MQMHBUF(MQHCONN /*Hconn*/, MQHMSG /*Hmsg*/, MQPTR /*MsgHBufOpts*/, MQPTR /*Name*/,
                            MQPTR /*MsgDesc*/, MQLONG /*BufferLength*/, MQPTR /*Buffer*/,
                            MQLONG* /*DataLength*/, MQLONG* CompCode, MQLONG* Reason) {
    Refuse(CompCode, Reason);
}
