// SPDX-License-Identifier: Apache-2.0
#include "mqi/binding.h"

#include <cstdlib>

#include "mqi/mqi.h"
#include "mqi/verbs.h"

namespace mqamod {

namespace {

struct Binding {
    // These are the verbs of the bound library. All are null until a library is bound; nothing clears them.
    Verbs verbs;
    // This line names the libraries that the last search tried, each with the reason why it was not bound.
    // Each MQCONNX that has to search replaces it.
    char failureText[kBindFailureBytes];
    // Says whether the last MQCONNX failed to bind a library. Each MQCONNX sets or clears this.
    bool failed;
};
Binding binding;

MQLONG Bind(const MQCNO* options) {
    if (binding.verbs.connx != nullptr) return MQRC_NONE;
    return BindVerbs(std::getenv("MQAMOD_MQ_LIBRARY"), options, binding.verbs, binding.failureText);
}

}  // namespace

const char* MqLibraryFailure() {
    return binding.failed ? binding.failureText : nullptr;
}

}  // namespace mqamod

// The verbs have IBM's names, so they are global.

using mqamod::Bind;
using mqamod::binding;

void MQCONNX(MQCHAR* QMgrName, MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    const MQLONG reason = Bind(ConnectOpts);
    binding.failed = reason != MQRC_NONE;
    if (binding.failed) {
        *CompCode = MQCC_FAILED;
        *Reason = reason;
        return;
    }
    binding.verbs.connx(QMgrName, ConnectOpts, Hconn, CompCode, Reason);
}

// The verbs below require a bound library: a handle exists only after a successful MQCONNX.

void MQDISC(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.disc(Hconn, CompCode, Reason);
}

void MQOPEN(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.open(Hconn, ObjDesc, Options, Hobj, CompCode, Reason);
}

void MQCLOSE(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.close(Hconn, Hobj, Options, CompCode, Reason);
}

void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength, MQPTR Buffer,
           MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.get(Hconn, Hobj, MsgDesc, GetMsgOpts, BufferLength, Buffer, DataLength, CompCode, Reason);
}

void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.cmit(Hconn, CompCode, Reason);
}

void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.back(Hconn, CompCode, Reason);
}
