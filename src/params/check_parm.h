// SPDX-License-Identifier: Apache-2.0

// Validates the keywords: the value of each, its limits, the setting it writes, and its messages.
#pragma once

#include <cstdint>

#include "mqamod.h"

namespace mqamod {

/// Validates the keyword at the index and stores its value in the settings.
///   tokens  in/out  count NUL-terminated tokens, owned by the caller; a value that is a word (Yes, No, T) is
///                   converted to upper case in place
///   index   in/out  position of the keyword, less than count; after success that of the next keyword
/// Returns pmrcOK; or pmrcFailure, with an error text, if the keyword is unknown, or its value is missing or
/// refused. A refused number stays stored.
[[nodiscard]] ReturnCode CheckParm(char* const* tokens, std::int32_t count, std::int32_t* index);

}  // namespace mqamod
