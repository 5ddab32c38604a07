// SPDX-License-Identifier: Apache-2.0

// Defines the attributes in tables: names, limits and the help text that goes into each file.
#include "spoolmq/attributes/attributes.h"

namespace spoolmq {

const std::vector<AttributeRow<QmgrAttributes>>& QmgrAttributeTable() {
    using A = QmgrAttributes;
    static const std::vector<AttributeRow<A>> table = {
        {"state", &A::state, nullptr, 0, 3, "running|quiescing|stopping|ended",
         "What programs see: quiescing is 2161, stopping 2162, ended 2059 on connect and 2009 afterwards."},
        {"default", &A::isDefault, nullptr, 0, 1, "no|yes",
         "Whether a blank name means this queue manager when there are several."},
        {"ccsid", &A::ccsid, nullptr, 1, 65535, nullptr,
         "Character set of messages that name none (1208 is UTF-8)."},
        {"max_uncommitted", &A::maxUncommitted, nullptr, 1, 999999999, nullptr,
         "Most messages in one unit of work; the next one is refused with 2024."},
        {"max_message_length", &A::maxMessageLength, nullptr, 0, 104857600, nullptr,
         "Longest message in bytes; longer ones are refused with 2031."},
        {"channel_max_message_length", &A::channelMaxMessageLength, nullptr, 0, 104857600, nullptr,
         "Message limit of the server's end of a client channel; a longer get buffer is refused with 2010."},
        {"channel", nullptr, &A::channel, 0, 0, nullptr,
         "Channel that clients must name, else 2540; empty: any."},
        {"listener", nullptr, &A::listener, 0, 0, nullptr,
         "Connection name, host(port), that clients must give, else 2538; empty: any."},
        {"sync", &A::sync, nullptr, 0, 1, "no|yes",
         "Force messages and commits to the disk: slower, but they survive a power failure."},
    };
    return table;
}

const std::vector<AttributeRow<QueueAttributes>>& QueueAttributeTable() {
    using A = QueueAttributes;
    static const std::vector<AttributeRow<A>> table = {
        {"get", &A::getInhibited, nullptr, 0, 1, "enabled|disabled", "When disabled, gets fail with 2016."},
        {"put", &A::putInhibited, nullptr, 0, 1, "enabled|disabled", "When disabled, puts fail with 2051."},
        {"shareable", &A::shareable, nullptr, 0, 1, "no|yes",
         "Whether several programs may read at once; if not, the second open fails with 2042."},
        {"default_open", &A::defaultOpenExclusive, nullptr, 0, 1, "shared|exclusive",
         "What an open \"as the queue defines\" means."},
        {"max_depth", &A::maxDepth, nullptr, 0, 999999999, nullptr,
         "Most messages on the queue; the next put fails with 2053."},
        {"max_message_length", &A::maxMessageLength, nullptr, 0, 104857600, nullptr,
         "Longest message in bytes; longer ones are refused with 2030."},
        {"default_persistence", &A::defaultPersistence, nullptr, 0, 1, "no|yes",
         "Persistence of messages that leave it to the queue."},
        {"default_priority", &A::defaultPriority, nullptr, 0, 9, nullptr,
         "Priority of messages that leave it to the queue; messages are read in order of arrival regardless."},
        {"backout_threshold", &A::backoutThreshold, nullptr, 0, 999999999, nullptr,
         "Reported to programs that inquire; has no other effect."},
        {"backout_queue", nullptr, &A::backoutQueue, 0, 0, nullptr,
         "Reported to programs that inquire; has no other effect."},
        {"file_format", nullptr, &A::fileFormat, 0, 0, nullptr,
         "Format of copied-in files: empty for bytes that are never converted, MQSTR for text that may be."},
        {"file_ccsid", &A::fileCcsid, nullptr, 0, 65535, nullptr,
         "Character set of copied-in files; 0: that of the queue manager."},
        {"settle_ms", &A::settleMs, nullptr, 0, 3600000, nullptr,
         "A copied-in file becomes a message this long after its last write; a file renamed into place, at "
         "once."},
    };
    return table;
}

}  // namespace spoolmq
