// SPDX-License-Identifier: Apache-2.0

// Plays the queue manager of the fuzzer, which answers each call as the input says. The module reaches it
// through the MQ double, which it loads like any MQ library.
#pragma once

#include <string>

#include "fuzz/byte_reader.h"

/// Makes the module find the double. It must be called once per process.
void BindMqScript();

/// Makes each call take its outcome, at least one byte, from the input. After the end of the input every
/// MQGET fails and every other call succeeds.
void PlayOutcomes(ByteReader* input);

/// Makes every call succeed. The queue delivers `messages` messages and is then empty; a host that continues
/// to ask gets a broken connection.
void PlayCalmQueue(int messages);

/// Returns the bytes of a message of the calm queue. The first one has number 1.
std::string CalmMessage(int number);

/// Sets the size of the host's record buffer. MQGET writes no more bytes than that, whatever length it
/// reports.
void SetRecordBufferRoom(std::size_t bytes);
