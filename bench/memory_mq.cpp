// SPDX-License-Identifier: Apache-2.0
#include "bench/memory_mq.h"

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "mqi/mqi.h"

extern "C" void SetMessageBytes(std::size_t bytes);

namespace {

std::size_t messageBytes = 100;
std::array<char, kLargestMessage> message;
// The number of messages that are left, or -1 if the queue is never empty.
std::int64_t messagesLeft = -1;
// The path of a file that exists once the queue is empty, or null if no file shows that.
const char* emptyMark = nullptr;

void ReadEnvironment() {
    const char* bytes = std::getenv("MEMORY_MQ_BYTES");
    const char* messages = std::getenv("MEMORY_MQ_MESSAGES");
    if (bytes != nullptr) SetMessageBytes(static_cast<std::size_t>(std::strtoull(bytes, nullptr, 10)));
    if (messages != nullptr) messagesLeft = std::strtoll(messages, nullptr, 10);
    emptyMark = std::getenv("MEMORY_MQ_EMPTY_MARK");
    if (emptyMark != nullptr && access(emptyMark, F_OK) == 0) messagesLeft = 0;
}

void MarkAsEmpty() {
    if (emptyMark == nullptr) return;
    if (std::FILE* mark = std::fopen(emptyMark, "w")) (void)std::fclose(mark);
}

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
    ReadEnvironment();
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
    if (messagesLeft == 0) {
        *CompCode = MQCC_FAILED;
        *Reason = MQRC_NO_MSG_AVAILABLE;
        *DataLength = 0;
        return;
    }
    if (messagesLeft > 0 && --messagesLeft == 0) MarkAsEmpty();
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
