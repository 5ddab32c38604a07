// SPDX-License-Identifier: Apache-2.0
#include "fuzz/host.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "fuzz/harness.h"
#include "fuzz/mq_script.h"

namespace {

constexpr char kHostByte = '\xA5';  // the content of fields that do not belong to the request
constexpr std::size_t kMostRecordBytes = 16777216;

// Memory on the heap at an odd address. The allocation ends with it, so that the sanitizer sees every access
// beyond it.
class ExactBlock {
  public:
    explicit ExactBlock(std::size_t bytes)
        : memory_(static_cast<char*>(std::malloc(bytes + 1))), bytes_(bytes) {
        Require(memory_ != nullptr, "there is memory for a block");
    }
    explicit ExactBlock(const std::string& bytes) : ExactBlock(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), Address());
    }
    ~ExactBlock() { std::free(memory_); }
    ExactBlock(const ExactBlock&) = delete;
    ExactBlock& operator=(const ExactBlock&) = delete;

    [[nodiscard]] char* Address() const { return memory_ + 1; }
    [[nodiscard]] std::size_t Size() const { return bytes_; }
    [[nodiscard]] bool Equals(const std::string& bytes) const {
        return bytes_ == bytes.size() && std::equal(bytes.begin(), bytes.end(), Address());
    }

    template <typename T>
    [[nodiscard]] T Field(std::size_t offset) const {
        T value{};
        std::memcpy(&value, Address() + offset, sizeof value);
        return value;
    }
    template <typename T>
    void SetField(std::size_t offset, T value) {
        std::memcpy(Address() + offset, &value, sizeof value);
    }

  private:
    char* memory_;
    std::size_t bytes_;
};

// Says which bytes of a block the module may write.
struct Outputs {
    std::size_t offset = 0;
    std::size_t bytes = 0;
};

std::size_t recordBytes = 1;  // requested by the last Open

bool IsReturnCode(ReturnCode code) {
    constexpr std::array<ReturnCode, 8> kCodes = {pmrcOK,           pmrcEOF,         pmrcBadVersion,
                                                  pmrcNotSupported, pmrcBadAttrName, pmrcFailure,
                                                  pmrcBadAttrValue, pmrcTimeout};
    return std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

void CheckErrorText(const ExactBlock& request) {
    const auto length = request.Field<std::uint32_t>(offsetof(RequestBlock, ErrorTextLength));
    const auto* text = request.Field<const char*>(offsetof(RequestBlock, ErrorText));
    Require((text == nullptr) == (length == 0), "an error text has a length and a length a text");
    if (text != nullptr)
        Require(std::memchr(text, 0, length) != nullptr, "an error text ends within its length");
}

std::string HostBytes(std::size_t count) {
    return std::string(count, kHostByte);
}

ReturnCode Call(std::uint32_t option, ExactBlock& data, Outputs outputs) {
    ExactBlock request(HostBytes(sizeof(RequestBlock)));
    request.SetField(offsetof(RequestBlock, OptCode), option);
    const std::string before(data.Address(), data.Size());

    PIDMMain(reinterpret_cast<RequestBlock*>(request.Address()), data.Address());

    const auto code = request.Field<ReturnCode>(offsetof(RequestBlock, ReturnCode));
    Require(IsReturnCode(code), "the return code is one of the interface's");
    CheckErrorText(request);
    Require(request.Field<std::uint32_t>(offsetof(RequestBlock, OptCode)) == option &&
                std::all_of(request.Address(), request.Address() + offsetof(RequestBlock, OptCode),
                            [](char c) { return c == kHostByte; }),
            "the host's part of the request block stays");
    const std::size_t end = outputs.offset + outputs.bytes;
    Require(
        std::memcmp(data.Address(), before.data(), outputs.offset) == 0 &&
            std::equal(before.begin() + static_cast<std::ptrdiff_t>(end), before.end(), data.Address() + end),
        "only the outputs of the data block change");
    return code;
}

ReturnCode Init(const char* initString, std::int32_t length, std::uint16_t firstVersion) {
    ExactBlock data(HostBytes(sizeof(InitBlock)));
    data.SetField(offsetof(InitBlock, firstVersion), firstVersion);
    data.SetField(offsetof(InitBlock, secondVersion), MQAMOD_SECOND_INTERFACE_VERSION);
    data.SetField(offsetof(InitBlock, initStringLength), length);
    data.SetField(offsetof(InitBlock, initString), initString);
    return Call(pmiPIDMOptInit, data, {offsetof(InitBlock, clearedByInit), sizeof(InitBlock::clearedByInit)});
}

ExactBlock AttributeData(const std::string& name, const std::string& value) {
    std::string bytes = HostBytes(offsetof(AttributeBlock, value)) + value;
    const std::size_t nameBytes = std::min<std::size_t>(name.size(), MQAMOD_ATTRIBUTE_NAME_BYTES);
    bytes.replace(offsetof(AttributeBlock, name), nameBytes, name, 0, nameBytes);
    if (nameBytes < MQAMOD_ATTRIBUTE_NAME_BYTES) bytes[offsetof(AttributeBlock, name) + nameBytes] = '\0';
    const auto length = static_cast<std::uint32_t>(value.size());
    std::memcpy(bytes.data() + offsetof(AttributeBlock, valueLength), &length, sizeof length);
    return ExactBlock(bytes);
}

}  // namespace

ReturnCode HostInit(const std::string& initString, std::uint16_t firstVersion) {
    const ExactBlock text(initString);
    const ReturnCode code = Init(text.Address(), static_cast<std::int32_t>(initString.size()), firstVersion);
    Require(text.Equals(initString), "the host's initialization string stays");
    return code;
}

ReturnCode HostInitNowhere(std::int32_t length) {
    return Init(nullptr, length, MQAMOD_FIRST_INTERFACE_VERSION);
}

ReturnCode HostOpen(std::int16_t mode, std::uint16_t pathNameLength) {
    ExactBlock data(HostBytes(offsetof(OpenBlock, pathNameLength) + sizeof(OpenBlock::pathNameLength)));
    data.SetField(offsetof(OpenBlock, openMode), mode);
    data.SetField(offsetof(OpenBlock, pathNameLength), pathNameLength);
    const auto untouched = data.Field<std::int32_t>(offsetof(OpenBlock, maxRecordBytes));
    constexpr std::size_t kFirst = offsetof(OpenBlock, zero0);
    const ReturnCode code =
        Call(pmiPIDMOptOpen, data, {kFirst, offsetof(OpenBlock, pathNameLength) - kFirst});
    const auto asked = data.Field<std::int32_t>(offsetof(OpenBlock, maxRecordBytes));
    if (asked != untouched)
        recordBytes = std::min(static_cast<std::size_t>(std::max(asked, 0)), kMostRecordBytes);
    return code;
}

Record HostRead() {
    const ExactBlock buffer(recordBytes);
    SetRecordBufferRoom(recordBytes);
    ExactBlock data(HostBytes(offsetof(ReadBlock, recordBuffer) + sizeof(ReadBlock::recordBuffer)));
    data.SetField(offsetof(ReadBlock, recordBuffer), static_cast<const void*>(buffer.Address()));
    const ReturnCode code =
        Call(pmiPIDMOptRead, data, {offsetof(ReadBlock, recordLength), sizeof(ReadBlock::recordLength)});
    const auto length = data.Field<std::uint32_t>(offsetof(ReadBlock, recordLength));
    if (code == pmrcEOF) Require(length == 0, "the end of input has no record");
    if (code != pmrcOK) return {code, {}};
    Require(length <= recordBytes, "a record fits into the buffer");
    return {code, std::string(buffer.Address(), length)};
}

Position HostGetPos() {
    constexpr std::size_t kFirst = offsetof(PositionBlock, positionLength);
    ExactBlock data(HostBytes(sizeof(PositionBlock)));
    data.SetField(offsetof(PositionBlock, position), static_cast<const void*>(nullptr));
    const ReturnCode code = Call(pmiPIDMOptGetPos, data, {kFirst, sizeof(PositionBlock) - kFirst});
    const auto* position = data.Field<const char*>(offsetof(PositionBlock, position));
    if (position == nullptr) return {code, std::nullopt};
    Require(data.Field<std::uint32_t>(kFirst) == MQAMOD_POSITION_BYTES, "a position has its length");
    PositionData copy{};
    std::memcpy(&copy, position, sizeof copy);
    return {code, copy};
}

ReturnCode HostSetPos(const std::string& position) {
    const ExactBlock block(position);
    ExactBlock data(HostBytes(sizeof(PositionBlock)));
    data.SetField(offsetof(PositionBlock, positionLength), static_cast<std::uint32_t>(position.size()));
    data.SetField(offsetof(PositionBlock, position), static_cast<const void*>(block.Address()));
    const ReturnCode code = Call(pmiPIDMOptSetPos, data, {});
    Require(block.Equals(position), "the host's position stays");
    return code;
}

ReturnCode HostSetPos(const PositionData& position) {
    return HostSetPos(std::string(reinterpret_cast<const char*>(&position), sizeof position));
}

ReturnCode HostClose() {
    return HostOption(pmiPIDMOptClose);
}

ReturnCode HostShut(std::uint16_t mode) {
    ExactBlock data(HostBytes(sizeof(ShutBlock)));
    data.SetField(offsetof(ShutBlock, closeMode), mode);
    return Call(pmiPIDMOptShut, data, {});
}

ReturnCode HostIdentify() {
    ExactBlock data(HostBytes(sizeof(IdBlock)));
    constexpr std::size_t kFirst = offsetof(IdBlock, identification);
    return Call(pmiPIDMOptID, data, {kFirst, sizeof(IdBlock) - kFirst});
}

ReturnCode HostPutAttribute(const std::string& name, const std::string& value) {
    ExactBlock data = AttributeData(name, value);
    return Call(pmiPIDMOptPutAttr, data, {});
}

ReturnCode HostGetAttribute(const std::string& name) {
    ExactBlock data = AttributeData(name, "");
    return Call(pmiPIDMOptGetAttr, data, {});
}

ReturnCode HostOption(std::uint32_t option) {
    ExactBlock data(0);
    return Call(option, data, {});
}
