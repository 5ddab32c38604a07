// SPDX-License-Identifier: Apache-2.0
#include "mqi/client_channel.h"

#include <cstring>

namespace mqamod {

namespace {

struct ChannelState {
    // This contains IBM's defaults, with the names of the last CHNL and SRVR. Nothing resets it: a later Init
    // without these keywords keeps the names.
    MQCD definition;
};
ChannelState state = {MqcdClientConnDefault()};

template <std::size_t N>
void FillField(MQCHAR (&field)[N], const char* value) {
    std::memset(field, 0, N);
    std::memcpy(field, value, strnlen(value, N));
}

}  // namespace

void SetChannelName(const char* value) {
    FillField(state.definition.ChannelName, value);
}

void SetConnectionName(const char* value) {
    FillField(state.definition.ConnectionName, value);
}

MQCD* ClientChannel() {
    return &state.definition;
}

}  // namespace mqamod
