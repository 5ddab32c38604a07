// SPDX-License-Identifier: Apache-2.0
#include "mqam/mq/queue_probe.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "mqi/client_channel.h"
#include "mqi/verbs.h"

namespace mqam {

namespace {

// Options of MQOPEN and MQGET that the module does not use.
constexpr MQLONG MQOO_BROWSE = 8;
constexpr MQLONG MQGMO_BROWSE_FIRST = 16;
constexpr MQLONG MQGMO_BROWSE_NEXT = 32;
constexpr MQLONG MQGMO_ACCEPT_TRUNCATED_MSG = 64;
constexpr MQLONG MQRC_TRUNCATED_MSG_ACCEPTED = 2079;

// A queue may hold millions of messages; the one that stopped a load is the first or near it.
constexpr int kBrowsedMax = 10000;

struct Probe {
    const ProbeRequest& request;
    mqamod::Verbs verbs{};
    MQHCONN connection = 0;
    MQHOBJ queue = 0;
    ProbeResult result = {};
};

template <std::size_t kSize>
void CopyName(const std::string& text, char (&field)[kSize]) {
    std::memset(field, 0, kSize);
    std::memcpy(field, text.data(), std::min(text.size(), kSize));
}

bool Fail(Probe& probe, ProbeStep step, MQLONG reason) {
    probe.result.step = step;
    probe.result.reason = reason;
    return false;
}

bool Connect(Probe& probe) {
    MQCNO options = MqcnoDefault();
    if (!probe.request.channel.empty() && !probe.request.server.empty()) {
        mqamod::SetChannelName(probe.request.channel.c_str());
        mqamod::SetConnectionName(probe.request.server.c_str());
        options.Version = MQCNO_VERSION_2;
        options.ClientConnPtr = mqamod::ClientChannel();
    }
    char failure[mqamod::kBindFailureBytes];
    const MQLONG bound = mqamod::BindVerbs(std::getenv("MQAMOD_MQ_LIBRARY"), &options, probe.verbs, failure);
    if (bound != MQRC_NONE) {
        probe.result.libraryFailure = failure;
        return Fail(probe, ProbeStep::kConnect, bound);
    }
    MQCHAR name[49];
    CopyName(probe.request.queueManager, name);
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    probe.verbs.connx(name, &options, &probe.connection, &compCode, &reason);
    return compCode != MQCC_FAILED || Fail(probe, ProbeStep::kConnect, reason);
}

bool Open(Probe& probe) {
    MQOD descriptor = MqodDefault();
    CopyName(probe.request.queue, descriptor.ObjectName);
    MQLONG options = MQOO_BROWSE | MQOO_FAIL_IF_QUIESCING;
    if (probe.request.open == ProbeOpen::kAsLoad) options |= MQOO_INPUT_AS_Q_DEF;
    if (probe.request.open == ProbeOpen::kAsExclusiveLoad) options |= MQOO_INPUT_EXCLUSIVE;
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    probe.verbs.open(probe.connection, &descriptor, options, &probe.queue, &compCode, &reason);
    return compCode != MQCC_FAILED || Fail(probe, ProbeStep::kOpen, reason);
}

std::string HexOf(const unsigned char* bytes, std::size_t count) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0x0F];
    }
    return text;
}

// Browses from the first message on, until one is too long.
bool Browse(Probe& probe) {
    for (int count = 0; count < kBrowsedMax; ++count) {
        MQMD message = MqmdDefault();
        MQGMO options = MqgmoDefault();
        options.Options = (count == 0 ? MQGMO_BROWSE_FIRST : MQGMO_BROWSE_NEXT) | MQGMO_ACCEPT_TRUNCATED_MSG |
                          MQGMO_NO_SYNCPOINT;
        char buffer[1];
        MQLONG bytes = 0;
        MQLONG compCode = MQCC_OK;
        MQLONG reason = MQRC_NONE;
        probe.verbs.get(probe.connection, probe.queue, &message, &options, 0, buffer, &bytes, &compCode,
                        &reason);
        const bool isThere = compCode == MQCC_OK || reason == MQRC_TRUNCATED_MSG_ACCEPTED;
        if (!isThere) return count > 0 || Fail(probe, ProbeStep::kBrowse, reason);
        if (count == 0) probe.result.firstBytes = bytes;
        if (bytes <= probe.request.maxRecordBytes) continue;
        probe.result.longBytes = bytes;
        probe.result.longMessageId =
            HexOf(reinterpret_cast<const unsigned char*>(message.MsgId), sizeof message.MsgId);
        break;
    }
    return true;
}

}  // namespace

ProbeResult ProbeQueue(const ProbeRequest& request) {
    Probe probe{.request = request};
    if (!Connect(probe)) return probe.result;
    MQLONG compCode = MQCC_OK;
    MQLONG reason = MQRC_NONE;
    if (Open(probe)) {
        if (Browse(probe)) probe.result.step = ProbeStep::kDone;
        probe.verbs.close(probe.connection, &probe.queue, 0, &compCode, &reason);
    }
    probe.verbs.disc(&probe.connection, &compCode, &reason);
    return probe.result;
}

}  // namespace mqam
