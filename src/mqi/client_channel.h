// SPDX-License-Identifier: Apache-2.0

// Keeps the channel definition of a client connection: IBM's defaults, with the two names from the keywords
// CHNL and SRVR. Init, Open and Shut do not reset it.
#pragma once

#include "mqi/mqi.h"

namespace mqamod {

/// Fills the ChannelName field with zeros and copies up to 20 bytes of the value into it. A full field has no
/// NUL.
void SetChannelName(const char* value);

/// Does the same for the 264 bytes of the ConnectionName field.
void SetConnectionName(const char* value);

/// Returns the definition for MQCONNX.
[[nodiscard]] MQCD* ClientChannel();

}  // namespace mqamod
