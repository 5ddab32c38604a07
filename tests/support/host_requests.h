// SPDX-License-Identifier: Apache-2.0

// Plays the host: builds the two blocks of a request byte for byte, calls PIDMMain and makes the checks that
// apply to every call. Each block is at an odd address and exactly as long as the fields of its option, so
// that a sanitizer sees every access beyond them. Bytes that the module must not write are filled with 0xA5
// before the call and checked after it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mqamod.h"

inline constexpr std::uint8_t kHostByte = 0xA5;

/// What a request returned.
struct Outcome {
    ReturnCode returnCode = -1;
    bool hasErrorText = false;
    std::string errorText;              ///< up to its NUL
    std::uint32_t errorTextLength = 0;  ///< as reported, 0 without a text
    const char* errorTextAddress = nullptr;
    std::string data;  ///< the bytes of the data block after the call
};

struct ReadOutcome : Outcome {
    std::uint32_t recordLength = 0;  ///< as reported
    std::string record;              ///< recordLength bytes of the host's buffer
    std::string buffer;              ///< the host's whole buffer
};

struct PositionOutcome : Outcome {
    bool given = false;  ///< the data block was written
    std::uint32_t positionLength = 0;
    PositionData position{};
};

class HostRequests {
  public:
    /// The size of the host's record buffer, which must be at least BKSZ.
    std::size_t recordBufferBytes = 1048576;

    void UseEntryPoint(PIDMMainFunction entryPoint) { entryPoint_ = entryPoint; }

    Outcome Init(const std::string& initString);
    Outcome InitWithVersions(std::uint16_t first, std::uint16_t second, const std::string& initString);
    /// Sends Init with a length that need not match the string, and a null pointer when there is no string.
    Outcome InitCounted(const std::optional<std::string>& initString, std::int32_t length);
    Outcome Open(std::int16_t mode = MQAMOD_OPEN_FOR_READING, std::uint16_t pathNameLength = 0);
    ReadOutcome Read();
    PositionOutcome GetPos();
    Outcome SetPos(const PositionData& position);
    /// Sends SetPos with bytes of any length.
    Outcome SetPosBytes(const std::string& bytes);
    Outcome Close();
    Outcome CloseR();
    Outcome Shut(std::uint16_t mode = 0);
    Outcome Write();
    Outcome Id();
    Outcome GetAttribute(const std::string& name, std::uint32_t option = pmiPIDMOptGetAttr);
    /// Sends the value followed by a NUL that the length counts.
    Outcome PutAttribute(const std::string& name, const std::string& value,
                         std::uint32_t option = pmiPIDMOptPutAttr);
    /// Sends a value of the bytes given and no more; the name field ends with its 255 bytes.
    Outcome PutAttributeBytes(const std::string& name, const std::string& bytes,
                              std::uint32_t option = pmiPIDMOptPutAttr);
    /// Sends a request whose data block is empty.
    Outcome Option(std::uint32_t option);

  private:
    struct Range {
        std::size_t offset;
        std::size_t bytes;
    };
    Outcome Call(std::uint32_t option, const std::string& data, const std::vector<Range>& writable);

    PIDMMainFunction entryPoint_ = nullptr;
};
