// The channel definition of a client connection: IBM's defaults, with the two names that the keywords CHNL
// and SRVR give. It outlives Init, Open and Shut.
#pragma once

#include "mqi/mqi.h"

/// Zero-fills the ChannelName field and copies the value's first 20 bytes into it; a full field has no NUL.
void SetChannelName(const char* value);

/// The same for the 264 bytes of the ConnectionName field.
void SetConnectionName(const char* value);

/// The definition to connect with.
[[nodiscard]] MQCD* ClientChannel();
