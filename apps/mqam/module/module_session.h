// SPDX-License-Identifier: Apache-2.0

// Drives the module as its host does: finds it, loads it, and makes one request at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mqam/base/status.h"
#include "mqam/module/module_failure.h"
#include "mqamod.h"

namespace mqam {

/// Returns the path of a library that belongs to a program in `programDirectory`, which ends with a delimiter:
/// in that directory itself, where a build puts it, or else where an installation puts it. If it is in neither,
/// returns the path in the program's own directory.
///   name  of the library, without what the system adds to it
[[nodiscard]] std::string FindLibraryOfProgram(const std::string& programDirectory, const std::string& name);

/// FindLibraryOfProgram for the module.
[[nodiscard]] std::string FindModule(const std::string& programDirectory);

/// Loads the module.
///   path        in   the library; if it is empty, the one that belongs to the running program
///   entryPoint  out  the module's entry point; unchanged on failure
/// The error says what was tried and why it failed.
Status LoadModule(const std::string& path, PIDMMainFunction& entryPoint);

/// Makes requests of a loaded module. Each of these methods makes one request and returns the module's code.
class ModuleSession {
  public:
    explicit ModuleSession(PIDMMainFunction entryPoint) : entryPoint_(entryPoint) {}

    [[nodiscard]] ReturnCode Init(const std::string& initString);
    /// `value` may contain any bytes; a NUL that its length does not count is added.
    [[nodiscard]] ReturnCode PutAttribute(const std::string& name, std::string_view value);
    /// `maxRecordBytes` is set if the code is pmrcOK.
    [[nodiscard]] ReturnCode Open(std::int16_t mode, std::uint32_t& maxRecordBytes);
    /// `buffer` must have room for at least maxRecordBytes.
    [[nodiscard]] ReturnCode Read(void* buffer, std::uint32_t& length);
    /// `position` is set if the code is pmrcOK and the module returned one.
    [[nodiscard]] ReturnCode GetPos(PositionData& position);
    [[nodiscard]] ReturnCode SetPos(const PositionData& position);
    [[nodiscard]] ReturnCode Close();
    [[nodiscard]] ReturnCode Shut();

    /// Returns the last request with its code and the error text that came with it.
    [[nodiscard]] ModuleFailure LastFailure() const;

    /// Returns the error text of the last request if it is new, otherwise an empty string. The module
    /// attaches a text to every later return as well, so only a text that differs from the previous one is
    /// new.
    [[nodiscard]] std::string TakeNewText();

  private:
    ReturnCode Ask(std::uint32_t option, const char* name, void* block);

    PIDMMainFunction entryPoint_;
    const char* request_ = "";
    std::string attribute_;
    ReturnCode code_ = pmrcOK;
    const char* text_ = nullptr;
    std::string seenText_;
};

}  // namespace mqam
