// The keywords: each with its value, its limits, the setting it writes and its messages.
#pragma once

#include <cstdint>

#include "mqamod.h"

/// Validates the keyword at the index and stores its value in the settings.
///   tokens  in/out  count NUL-terminated tokens, the caller's; Yes or No is put into upper case in place
///   index   in/out  position of the keyword, below count; on success moved behind the tokens consumed
/// Returns pmrcOK; or pmrcFailure for an unknown keyword or a value that is missing or refused, with an error
/// text that says which. What was stored before the failure, the refused number included, stays stored.
[[nodiscard]] ReturnCode CheckParm(char* const* tokens, std::int32_t count, std::int32_t* index);
