// SPDX-License-Identifier: Apache-2.0
#include "mqam/module/module_session.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "install_layout.h"
#include "platform/file.h"
#include "platform/library.h"
#include "platform/paths.h"

namespace mqam {

std::string FindLibraryOfProgram(const std::string& programDirectory, const std::string& name) {
    using platform::PathKind;
    using platform::ProbePath;
    std::string nextToProgram = programDirectory + platform::LibraryFileName(name);
    std::string installed = programDirectory + kInstalledModuleDirectory + platform::LibraryFileName(name);
    const bool isInstalled =
        ProbePath(nextToProgram) == PathKind::kMissing && ProbePath(installed) != PathKind::kMissing;
    return isInstalled ? installed : nextToProgram;
}

std::string FindModule(const std::string& programDirectory) {
    return FindLibraryOfProgram(programDirectory, "mqamod");
}

Status LoadModule(const std::string& path, PIDMMainFunction& entryPoint) {
    const std::string tried = path.empty() ? FindModule(platform::ProgramDirectory()) : path;
    std::string error;
    void* library = platform::OpenLibrary(tried, error);
    if (library == nullptr) {
        return Status::Permanent("the module cannot be loaded: " +
                                 (error.starts_with(tried) ? error : tried + ": " + error));
    }
    void* function = platform::FindFunction(library, "PIDMMain");
    if (function == nullptr) {
        return Status::Permanent("the module cannot be loaded: " + tried +
                                 ": it exports no PIDMMain, so it is not the access module");
    }
    entryPoint = reinterpret_cast<PIDMMainFunction>(function);
    return {};
}

ReturnCode ModuleSession::Ask(std::uint32_t option, const char* name, void* block) {
    RequestBlock request{};
    request.OptCode = option;
    entryPoint_(&request, block);
    request_ = name;
    code_ = static_cast<ReturnCode>(request.ReturnCode);
    text_ = request.ErrorText;
    return code_;
}

ReturnCode ModuleSession::Init(const std::string& initString) {
    InitBlock block{};
    block.firstVersion = MQAMOD_FIRST_INTERFACE_VERSION;
    block.secondVersion = MQAMOD_SECOND_INTERFACE_VERSION;
    block.initStringLength = static_cast<std::int32_t>(initString.size());
    block.initString = initString.c_str();
    return Ask(pmiPIDMOptInit, "Init", &block);
}

ReturnCode ModuleSession::PutAttribute(const std::string& name, std::string_view value) {
    std::vector<char> bytes(offsetof(AttributeBlock, value) + value.size() + 1, '\0');
    std::memcpy(bytes.data() + offsetof(AttributeBlock, name), name.data(),
                std::min<std::size_t>(name.size(), MQAMOD_ATTRIBUTE_NAME_BYTES));
    const auto length = static_cast<std::uint32_t>(value.size());
    std::memcpy(bytes.data() + offsetof(AttributeBlock, valueLength), &length, sizeof length);
    if (!value.empty()) {
        std::memcpy(bytes.data() + offsetof(AttributeBlock, value), value.data(), value.size());
    }
    attribute_ = name;
    return Ask(pmiPIDMOptPutAttr, "PutAttribute", bytes.data());
}

ReturnCode ModuleSession::Open(std::int16_t mode, std::uint32_t& maxRecordBytes) {
    OpenBlock block{};
    block.openMode = mode;
    const ReturnCode code = Ask(pmiPIDMOptOpen, "Open", &block);
    maxRecordBytes = block.maxRecordBytes;
    return code;
}

ReturnCode ModuleSession::Read(void* buffer, std::uint32_t& length) {
    ReadBlock block{};
    block.recordBuffer = buffer;
    const ReturnCode code = Ask(pmiPIDMOptRead, "Read", &block);
    length = block.recordLength;
    return code;
}

ReturnCode ModuleSession::GetPos(PositionData& position) {
    PositionBlock block{};
    const ReturnCode code = Ask(pmiPIDMOptGetPos, "GetPos", &block);
    if (code == pmrcOK && block.position != nullptr && block.positionLength == MQAMOD_POSITION_BYTES) {
        std::memcpy(&position, block.position, MQAMOD_POSITION_BYTES);
    }
    return code;
}

ReturnCode ModuleSession::SetPos(const PositionData& position) {
    PositionBlock block{};
    block.positionLength = MQAMOD_POSITION_BYTES;
    block.position = &position;
    return Ask(pmiPIDMOptSetPos, "SetPos", &block);
}

ReturnCode ModuleSession::Close() {
    PositionBlock block{};  // Close has no fields of its own
    return Ask(pmiPIDMOptClose, "Close", &block);
}

ReturnCode ModuleSession::Shut() {
    ShutBlock block{};
    return Ask(pmiPIDMOptShut, "Shut", &block);
}

ModuleFailure ModuleSession::LastFailure() const {
    ModuleFailure outcome;
    outcome.request = request_;
    if (outcome.request == "PutAttribute") {
        outcome.request += " " + attribute_;
    }
    outcome.code = code_;
    // These codes come without an error text. A text that is attached belongs to an earlier request.
    const bool hasText = code_ != pmrcBadAttrName && code_ != pmrcBadAttrValue && code_ != pmrcNotSupported &&
                         code_ != pmrcBadVersion;
    if (hasText && text_ != nullptr) {
        outcome.text = text_;
    }
    return outcome;
}

std::string ModuleSession::TakeNewText() {
    if (text_ == nullptr || seenText_ == text_) {
        return "";
    }
    seenText_ = text_;
    return seenText_;
}

}  // namespace mqam
