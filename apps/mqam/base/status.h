// SPDX-License-Identifier: Apache-2.0

// Says how a call of mqam ended: one type for every routine that can fail.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace mqam {

enum class StatusCode : std::uint8_t {
    kOk,
    kRefused,    ///< the request does not fit what is there: nothing was changed, and the user has to decide
    kTransient,  ///< the system failed; the same call may succeed later
    kPermanent,  ///< the call fails until someone changes something
};

/// A code, and for every code but kOk an error message for the user: the plain fact first, then the reason,
/// then what to do, without a line end.
class [[nodiscard]] Status {
  public:
    Status() = default;
    static Status Refused(std::string error) { return {StatusCode::kRefused, std::move(error)}; }
    static Status Transient(std::string error) { return {StatusCode::kTransient, std::move(error)}; }
    static Status Permanent(std::string error) { return {StatusCode::kPermanent, std::move(error)}; }

    [[nodiscard]] bool IsOk() const { return code_ == StatusCode::kOk; }
    [[nodiscard]] StatusCode Code() const { return code_; }
    /// Returns the error message, which is empty with kOk.
    [[nodiscard]] const std::string& Error() const { return error_; }

  private:
    Status(StatusCode code, std::string error) : code_(code), error_(std::move(error)) {}

    StatusCode code_ = StatusCode::kOk;
    std::string error_;
};

}  // namespace mqam
