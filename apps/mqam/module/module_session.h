// The module as the host drives it: found, loaded, and asked one request at a time.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "mqam/module/module_failure.h"
#include "mqamod.h"

namespace mqam {

/// Returns the path of the module that belongs to a program in `programDirectory`, which ends with a delimiter:
/// in that directory itself, where a build puts it, or else where an installation puts it. If it is in neither,
/// the path in the program's own directory.
[[nodiscard]] std::string FindModule(const std::string& programDirectory);

/// Loads the module.
///   path    in   the library; empty = the one that belongs to the running program
///   reason  out  what was tried and why it failed
/// Returns its entry point, or null.
[[nodiscard]] PIDMMainFunction LoadModule(const std::string& path, std::string& reason);

/// One conversation with a loaded module. Each Ask... carries out one request and returns the module's code.
class ModuleSession {
  public:
    explicit ModuleSession(PIDMMainFunction entryPoint) : entryPoint_(entryPoint) {}

    [[nodiscard]] ReturnCode Init(const std::string& initString);
    /// `value` may hold any bytes; a NUL follows them that its length does not count.
    [[nodiscard]] ReturnCode PutAttribute(const std::string& name, std::string_view value);
    /// maxRecordBytes is filled when the code is pmrcOK.
    [[nodiscard]] ReturnCode Open(std::int16_t mode, std::uint32_t& maxRecordBytes);
    /// `buffer` holds at least maxRecordBytes.
    [[nodiscard]] ReturnCode Read(void* buffer, std::uint32_t& length);
    /// `position` is filled when the code is pmrcOK and the module handed one out.
    [[nodiscard]] ReturnCode GetPos(PositionData& position);
    [[nodiscard]] ReturnCode SetPos(const PositionData& position);
    [[nodiscard]] ReturnCode Close();
    [[nodiscard]] ReturnCode Shut();

    /// The last request with its code and the error text that came with it.
    [[nodiscard]] ModuleFailure LastFailure() const;

    /// Returns the error text of the last request if it is news, else an empty string. The module leaves a
    /// text attached to every later return, so only a text that differs from the one before is news.
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
