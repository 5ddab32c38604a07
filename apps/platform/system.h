// SPDX-License-Identifier: Apache-2.0

// Says which system this is, for what differs between systems by contract and not by a call.
#pragma once

namespace platform {

#ifdef _WIN32
inline constexpr bool kIsWindows = true;
#else
inline constexpr bool kIsWindows = false;
#endif

}  // namespace platform
