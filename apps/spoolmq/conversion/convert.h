// SPDX-License-Identifier: Apache-2.0

// Converts message data between character sets, for gets with MQGMO_CONVERT.
#pragma once

#include <cstddef>

#include "spoolmq/base/mqi_server.h"

namespace spoolmq {

/// Says how text is represented: the two fields of MQMD that describe it.
struct TextForm {
    MQLONG ccsid = 0;
    MQLONG encoding = 0;
};

struct MessageBuffer {
    void* data = nullptr;
    std::size_t bytes = 0;     ///< length of the message data
    std::size_t capacity = 0;  ///< size of the buffer
};

struct Conversion {
    MQLONG reason = MQRC_NONE;
    TextForm form;          ///< the form of the data afterwards; meaningless if `reason` is set
    std::size_t bytes = 0;  ///< length of the data afterwards
};

/// Converts the data in the buffer, in place, from the form that the descriptor gives to the wanted form.
/// Reasons, all of which leave the data and its length as they were:
///   2110        the format is not MQSTR
///   2111, 2115  the source or the target character set is unknown
///   2112, 2116  the source or the target encoding has an unknown byte order
///   2119        a character is malformed or does not exist in the target character set
///   2120        the result is larger than the buffer
[[nodiscard]] Conversion ConvertMessage(const mqi::MQMD& descriptor, const TextForm& wanted,
                                        const MessageBuffer& buffer);

}  // namespace spoolmq
