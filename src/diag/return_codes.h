// The codes that PIDMMain hands to the host as the outcome of a request. They stand at the bottom of the
// module because every layer returns them; entry/host_interface.h, the host's view of the module, includes
// them.
#pragma once

#include <cstdint>

using ReturnCode = std::int32_t;

inline constexpr ReturnCode pmrcOK = 0;             ///< request done
inline constexpr ReturnCode pmrcEOF = 9;            ///< end of input: no record, record length 0
inline constexpr ReturnCode pmrcBadVersion = 18;    ///< Init with other interface versions than 1001 and 2001
inline constexpr ReturnCode pmrcNotSupported = 24;  ///< unsupported option number, Write, GetAttribute
inline constexpr ReturnCode pmrcBadAttrName = 33;   ///< PutAttribute with a name the module does not know
inline constexpr ReturnCode pmrcFailure = 34;       ///< the request failed; the error text says why
inline constexpr ReturnCode pmrcBadAttrValue = 40;  ///< PutAttribute with a value that is refused
inline constexpr ReturnCode pmrcTimeout = 55;       ///< the time-out set by TIMEOUT_SECONDS expired
