// SPDX-License-Identifier: Apache-2.0

// Says which system this is, for behaviour that differs between the systems by design and that no call of
// this directory hides.
#pragma once

namespace platform {

#ifdef _WIN32
inline constexpr bool kIsWindows = true;
#else
inline constexpr bool kIsWindows = false;
#endif

}  // namespace platform
