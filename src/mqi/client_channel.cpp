#include "mqi/client_channel.h"

#include <cstring>

namespace {

MQCD channel = MqcdClientConnDefault();

template <std::size_t N>
void FillField(MQCHAR (&field)[N], const char* value) {
    std::memset(field, 0, N);
    std::memcpy(field, value, strnlen(value, N));
}

}  // namespace

void SetChannelName(const char* value) {
    FillField(channel.ChannelName, value);
}

void SetConnectionName(const char* value) {
    FillField(channel.ConnectionName, value);
}

MQCD* ClientChannel() {
    return &channel;
}
