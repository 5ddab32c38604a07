// SPDX-License-Identifier: Apache-2.0
#include "bench/memory_mq.h"

#include <array>
#include <cstring>

#include "mqi/mqi.h"

namespace {

std::size_t messageBytes = 100;
std::array<char, kLargestMessage> message;

void Succeed(MQLONG* compCode, MQLONG* reason) {
    *compCode = MQCC_OK;
    *reason = MQRC_NONE;
}

}  // namespace

extern "C" {

[[gnu::visibility("default")]] void SetMessageBytes(std::size_t bytes) {
    messageBytes = bytes;
    message.fill('m');
}

[[gnu::visibility("default")]] void MQCONNX(MQCHAR*, MQCNO*, MQHCONN* Hconn, MQLONG* CompCode,
                                            MQLONG* Reason) {
    *Hconn = 1;
    Succeed(CompCode, Reason);
}

[[gnu::visibility("default")]] void MQDISC(MQHCONN*, MQLONG* CompCode, MQLONG* Reason) {
    Succeed(CompCode, Reason);
}

[[gnu::visibility("default")]] void MQOPEN(MQHCONN, MQPTR, MQLONG, MQHOBJ* Hobj, MQLONG* CompCode,
                                           MQLONG* Reason) {
    *Hobj = 1;
    Succeed(CompCode, Reason);
}

[[gnu::visibility("default")]] void MQCLOSE(MQHCONN, MQHOBJ*, MQLONG, MQLONG* CompCode, MQLONG* Reason) {
    Succeed(CompCode, Reason);
}

[[gnu::visibility("default")]] void MQGET(MQHCONN, MQHOBJ, MQPTR, MQPTR, MQLONG, MQPTR Buffer,
                                          MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    std::memcpy(Buffer, message.data(), messageBytes);
    *DataLength = static_cast<MQLONG>(messageBytes);
    Succeed(CompCode, Reason);
}

[[gnu::visibility("default")]] void MQCMIT(MQHCONN, MQLONG* CompCode, MQLONG* Reason) {
    Succeed(CompCode, Reason);
}

[[gnu::visibility("default")]] void MQBACK(MQHCONN, MQLONG* CompCode, MQLONG* Reason) {
    Succeed(CompCode, Reason);
}
}
