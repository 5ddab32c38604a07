// The queue manager of the fuzzer. It stands behind the MQ double, a library that the module loads as it
// loads any MQ library, and answers each call as the input says.
#pragma once

#include <string>

#include "fuzz/byte_reader.h"

/// Makes the module find the double. Once a process.
void BindMqScript();

/// Takes each call's outcome from the input, one byte or more a call, as the calls come. Behind the input's
/// end MQGET fails for good and everything else succeeds.
void PlayOutcomes(ByteReader* input);

/// Everything succeeds; the queue delivers so many messages, then it is empty, and a host that goes on asking
/// is told that the connection broke.
void PlayCalmQueue(int messages);

/// The bytes of the calm queue's message, the first being number 1.
std::string CalmMessage(int number);

/// The room in the host's record buffer: no more is written there, whatever length is told.
void SetRecordBufferRoom(std::size_t bytes);
