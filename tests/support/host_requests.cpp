// SPDX-License-Identifier: Apache-2.0
#include "tests/support/host_requests.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

/// A copy of the bytes at an odd address. The allocation ends with it, so that a sanitizer sees every access
/// beyond it.
class OddBlock {
  public:
    explicit OddBlock(const std::string& bytes) : bytes_(bytes.size()), memory_(new char[bytes.size() + 1]) {
        std::memcpy(Address(), bytes.data(), bytes_);
    }
    [[nodiscard]] char* Address() const { return memory_.get() + 1; }
    [[nodiscard]] std::string Bytes() const { return {Address(), bytes_}; }

  private:
    std::size_t bytes_;
    std::unique_ptr<char[]> memory_;
};

std::string HostBytes(std::size_t count) {
    return std::string(count, static_cast<char>(kHostByte));
}

template <typename T>
void Store(std::string& block, std::size_t offset, T value) {
    std::memcpy(block.data() + offset, &value, sizeof value);
}

template <typename T>
T Fetch(const std::string& block, std::size_t offset) {
    T value{};
    std::memcpy(&value, block.data() + offset, sizeof value);
    return value;
}

/// Reads the error text that the request block points to. Checks that only zeros follow it within the length
/// reported.
void FetchErrorText(const std::string& request, Outcome& outcome) {
    outcome.errorTextLength = Fetch<std::uint32_t>(request, offsetof(RequestBlock, ErrorTextLength));
    outcome.errorTextAddress = Fetch<const char*>(request, offsetof(RequestBlock, ErrorText));
    outcome.hasErrorText = outcome.errorTextAddress != nullptr;
    if (!outcome.hasErrorText) {
        EXPECT_EQ(outcome.errorTextLength, 0U) << "a length without an error text";
        return;
    }
    const std::string bytes(outcome.errorTextAddress, outcome.errorTextLength);
    outcome.errorText = bytes.substr(0, bytes.find('\0'));
    EXPECT_LT(outcome.errorText.size(), bytes.size()) << "the error text has no NUL within its length";
    const std::size_t restBytes = bytes.size() - outcome.errorText.size();
    EXPECT_EQ(bytes.substr(outcome.errorText.size()), std::string(restBytes, '\0'))
        << "bytes after the error text";
}

constexpr std::size_t kReadBytes = offsetof(ReadBlock, recordBuffer) + sizeof(void*);
constexpr std::size_t kPositionBlockBytes = offsetof(PositionBlock, position) + sizeof(void*);
constexpr std::size_t kAttributeNameBlockBytes = offsetof(AttributeBlock, valueLength);

std::string AttributeBytes(const std::string& name) {
    std::string data = HostBytes(kAttributeNameBlockBytes);
    const std::string field = (name + '\0').substr(0, MQAMOD_ATTRIBUTE_NAME_BYTES);
    data.replace(offsetof(AttributeBlock, name), field.size(), field);
    return data;
}

}  // namespace

Outcome HostRequests::Call(std::uint32_t option, const std::string& data,
                           const std::vector<Range>& writable) {
    std::string request = HostBytes(sizeof(RequestBlock));
    Store(request, offsetof(RequestBlock, OptCode), option);
    const OddBlock requestBlock(request);
    const OddBlock dataBlock(data);

    entryPoint_(reinterpret_cast<RequestBlock*>(requestBlock.Address()), dataBlock.Address());

    const std::string after = requestBlock.Bytes();
    Outcome outcome;
    outcome.returnCode = Fetch<ReturnCode>(after, offsetof(RequestBlock, ReturnCode));
    EXPECT_EQ(after.substr(0, 38), request.substr(0, 38)) << "the host's own bytes of the request block";
    EXPECT_EQ(after.substr(42, 4), request.substr(42, 4)) << "the host's own bytes of the request block";
    FetchErrorText(after, outcome);

    outcome.data = dataBlock.Bytes();
    std::string untouched = outcome.data;
    for (const Range& range : writable) {
        untouched.replace(range.offset, range.bytes, data, range.offset, range.bytes);
    }
    EXPECT_TRUE(untouched == data) << "option " << option << " wrote outside its output fields";
    return outcome;
}

Outcome HostRequests::InitWithVersions(std::uint16_t first, std::uint16_t second,
                                       const std::string& initString) {
    std::string data = HostBytes(offsetof(InitBlock, initString) + sizeof(char*));
    const OddBlock text(initString);
    Store(data, offsetof(InitBlock, firstVersion), first);
    Store(data, offsetof(InitBlock, secondVersion), second);
    Store(data, offsetof(InitBlock, initStringLength), static_cast<std::int32_t>(initString.size()));
    Store(data, offsetof(InitBlock, initString), text.Address());
    return Call(pmiPIDMOptInit, data, {{offsetof(InitBlock, clearedByInit), 8}});
}

Outcome HostRequests::Init(const std::string& initString) {
    return InitWithVersions(MQAMOD_FIRST_INTERFACE_VERSION, MQAMOD_SECOND_INTERFACE_VERSION, initString);
}

Outcome HostRequests::InitCounted(const std::optional<std::string>& initString, std::int32_t length) {
    std::string data = HostBytes(offsetof(InitBlock, initString) + sizeof(char*));
    const OddBlock text(initString.value_or(""));
    Store(data, offsetof(InitBlock, firstVersion), MQAMOD_FIRST_INTERFACE_VERSION);
    Store(data, offsetof(InitBlock, secondVersion), MQAMOD_SECOND_INTERFACE_VERSION);
    Store(data, offsetof(InitBlock, initStringLength), length);
    Store(data, offsetof(InitBlock, initString), initString ? text.Address() : nullptr);
    return Call(pmiPIDMOptInit, data, {{offsetof(InitBlock, clearedByInit), 8}});
}

Outcome HostRequests::Open(std::int16_t mode, std::uint16_t pathNameLength) {
    std::string data = HostBytes(offsetof(OpenBlock, pathNameLength) + sizeof(std::uint16_t));
    Store(data, offsetof(OpenBlock, openMode), mode);
    Store(data, offsetof(OpenBlock, pathNameLength), pathNameLength);
    return Call(pmiPIDMOptOpen, data,
                {{offsetof(OpenBlock, zero0), 2},
                 {offsetof(OpenBlock, maxRecordBytes), 4},
                 {offsetof(OpenBlock, zero1), 8}});
}

ReadOutcome HostRequests::Read() {
    const OddBlock buffer(HostBytes(recordBufferBytes));
    std::string data = HostBytes(kReadBytes);
    Store(data, offsetof(ReadBlock, recordBuffer), buffer.Address());
    ReadOutcome outcome;
    static_cast<Outcome&>(outcome) = Call(pmiPIDMOptRead, data, {{offsetof(ReadBlock, recordLength), 4}});
    outcome.recordLength = Fetch<std::uint32_t>(outcome.data, offsetof(ReadBlock, recordLength));
    outcome.buffer = buffer.Bytes();
    if (outcome.recordLength <= recordBufferBytes)
        outcome.record = outcome.buffer.substr(0, outcome.recordLength);
    return outcome;
}

PositionOutcome HostRequests::GetPos() {
    const std::string before = HostBytes(kPositionBlockBytes);
    PositionOutcome outcome;
    static_cast<Outcome&>(outcome) =
        Call(pmiPIDMOptGetPos, before, {{offsetof(PositionBlock, positionLength), 12}});
    outcome.given = outcome.data != before;
    if (outcome.given) {
        outcome.positionLength = Fetch<std::uint32_t>(outcome.data, offsetof(PositionBlock, positionLength));
        const auto* position = Fetch<const void*>(outcome.data, offsetof(PositionBlock, position));
        std::memcpy(&outcome.position, position, sizeof outcome.position);
    }
    return outcome;
}

Outcome HostRequests::SetPos(const PositionData& position) {
    return SetPosBytes(std::string(reinterpret_cast<const char*>(&position), sizeof position));
}

Outcome HostRequests::SetPosBytes(const std::string& bytes) {
    const OddBlock position(bytes);
    std::string data = HostBytes(kPositionBlockBytes);
    Store(data, offsetof(PositionBlock, positionLength), static_cast<std::uint32_t>(bytes.size()));
    Store(data, offsetof(PositionBlock, position), position.Address());
    Outcome outcome = Call(pmiPIDMOptSetPos, data, {});
    EXPECT_EQ(position.Bytes(), bytes) << "the host's position data";
    return outcome;
}

Outcome HostRequests::Close() {
    return Call(pmiPIDMOptClose, "", {});
}

Outcome HostRequests::CloseR() {
    return Call(pmiPIDMOptCloseR, "", {});
}

Outcome HostRequests::Shut(std::uint16_t mode) {
    std::string data = HostBytes(offsetof(ShutBlock, closeMode) + sizeof(std::uint16_t));
    Store(data, offsetof(ShutBlock, closeMode), mode);
    return Call(pmiPIDMOptShut, data, {});
}

Outcome HostRequests::Write() {
    return Call(pmiPIDMOptWrite, "", {});
}

Outcome HostRequests::Id() {
    return Call(pmiPIDMOptID, HostBytes(offsetof(IdBlock, zero) + 8),
                {{offsetof(IdBlock, identification), 32},
                 {offsetof(IdBlock, version), 12},
                 {offsetof(IdBlock, zero), 8}});
}

Outcome HostRequests::GetAttribute(const std::string& name, std::uint32_t option) {
    std::string data = AttributeBytes(name);
    Store(data.append(4, '\0'), offsetof(AttributeBlock, valueLength), std::uint32_t{0});
    return Call(option, data, {});
}

Outcome HostRequests::PutAttribute(const std::string& name, const std::string& value, std::uint32_t option) {
    return PutAttributeBytes(name, value + '\0', option);
}

Outcome HostRequests::PutAttributeBytes(const std::string& name, const std::string& bytes,
                                        std::uint32_t option) {
    std::string data = AttributeBytes(name);
    data.append(4, '\0');
    Store(data, offsetof(AttributeBlock, valueLength), static_cast<std::uint32_t>(bytes.size()));
    return Call(option, data + bytes, {});
}

Outcome HostRequests::Option(std::uint32_t option) {
    return Call(option, "", {});
}
