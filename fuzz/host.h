// The fuzzer's host: makes requests of the module through PIDMMain. Its blocks stand at odd addresses and end
// exactly behind the last field that belongs to the request, so that the sanitizer sees every byte touched
// beyond. After each request it holds the module to its contract: a code that exists, an error text that ends
// within its length, nothing written but the request's outputs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "mqamod.h"

ReturnCode HostInit(const std::string& initString,
                    std::uint16_t firstVersion = MQAMOD_FIRST_INTERFACE_VERSION);

/// Init with a null pointer and this length, which must not be above 0.
ReturnCode HostInitNowhere(std::int32_t length);

/// Notes the record bytes that the module asks for.
ReturnCode HostOpen(std::int16_t mode = MQAMOD_OPEN_FOR_READING, std::uint16_t pathNameLength = 0);

struct Record {
    ReturnCode code;
    std::string bytes;
};
/// With a buffer of the bytes that the last Open asked for.
Record HostRead();

struct Position {
    ReturnCode code;
    std::optional<PositionData> data;  ///< none when the module gave none
};
Position HostGetPos();

/// Any number of bytes may be given; 16 are right.
ReturnCode HostSetPos(const std::string& position);
ReturnCode HostSetPos(const PositionData& position);

ReturnCode HostClose();
ReturnCode HostShut(std::uint16_t mode);
ReturnCode HostIdentify();

/// PutAttribute with exactly these bytes as value.
ReturnCode HostPutAttribute(const std::string& name, const std::string& value);
ReturnCode HostGetAttribute(const std::string& name);

/// An option without a data block: Write, close/rewind, numbers that are none.
ReturnCode HostOption(std::uint32_t option);
