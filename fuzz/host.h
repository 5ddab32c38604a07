// SPDX-License-Identifier: Apache-2.0

// Plays the fuzzer's host, which makes requests of the module through PIDMMain. Its blocks are at odd
// addresses and end exactly after the last field of the request, so that the sanitizer sees every access
// beyond it. After each request the host checks that the return code exists, that the error text ends within
// its length, and that only the request's outputs were written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "mqamod.h"

ReturnCode HostInit(const std::string& initString,
                    std::uint16_t firstVersion = MQAMOD_FIRST_INTERFACE_VERSION);

/// Calls Init with a null pointer instead of a string. `length` must not be above 0.
ReturnCode HostInitNowhere(std::int32_t length);

/// Calls Open and remembers the record length that the module asks for.
ReturnCode HostOpen(std::int16_t mode = MQAMOD_OPEN_FOR_READING, std::uint16_t pathNameLength = 0);

struct Record {
    ReturnCode code;
    std::string bytes;
};
/// Calls Read with a buffer of the length that the last Open asked for.
Record HostRead();

struct Position {
    ReturnCode code;
    std::optional<PositionData> data;  ///< empty if the module returned no position
};
Position HostGetPos();

/// Calls SetPos with any number of bytes; 16 are correct.
ReturnCode HostSetPos(const std::string& position);
ReturnCode HostSetPos(const PositionData& position);

ReturnCode HostClose();
ReturnCode HostShut(std::uint16_t mode);
ReturnCode HostIdentify();

/// Calls PutAttribute with exactly these bytes as value.
ReturnCode HostPutAttribute(const std::string& name, const std::string& value);
ReturnCode HostGetAttribute(const std::string& name);

/// Requests an option without a data block: Write, close/rewind, or a number that does not exist.
ReturnCode HostOption(std::uint32_t option);
