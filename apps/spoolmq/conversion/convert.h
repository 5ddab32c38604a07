// Conversion of message data between character sets, for gets with MQGMO_CONVERT.
#pragma once

#include <cstddef>

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

struct ConversionResult {
    MQLONG reason = MQRC_NONE;  ///< MQRC_NONE: the buffer holds data in this character set and encoding
    MQLONG ccsid = 0;
    MQLONG encoding = 0;
};

/// Converts the data in `buffer` from what the descriptor says to the wanted character set and encoding.
///   length     bytes of data, not more than capacity
///   capacity   bytes of the buffer
///   converted  out: bytes of data afterwards; the unconverted length when there is a reason
/// Reasons: 2110 the format is none that can be converted; 2111, 2115 source or target character set not
/// known; 2112, 2116 source or target encoding not known; 2119 a character is malformed or has no
/// counterpart; 2120 the result does not fit. In each case the data is as it was.
[[nodiscard]] ConversionResult ConvertMessage(const mqi::MQMD& descriptor, MQLONG wantedCcsid,
                                              MQLONG wantedEncoding, void* buffer, std::size_t length,
                                              std::size_t capacity, std::size_t* converted);

}  // namespace spoolmq
