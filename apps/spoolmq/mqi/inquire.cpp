// SPDX-License-Identifier: Apache-2.0

// Implements MQINQ. Two tables list the attributes: one those of queues, the other those of queue managers.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "spoolmq/base/appl_type.h"
#include "spoolmq/mqi/verb_frame.h"
#include "spoolmq/store/descriptor.h"

namespace spoolmq {

namespace {

constexpr std::size_t kNameChars = 48;

struct Selector {
    MQLONG selector;
    MQLONG (*number)(const OpenObject&, const Connection&);     // null for a character attribute
    std::string (*text)(const OpenObject&, const Connection&);  // null for an integer attribute
};

const QueueAttributes& QueueValues(const OpenObject& object) {
    return object.queue->state->attributes.values;
}
const QmgrAttributes& QmgrValues(const Connection& connection) {
    return connection.store->attributes.values;
}

using O = OpenObject;
using C = Connection;

const Selector kQueueSelectors[] = {
    {3,
     [](const O& o, const C& c) {
         return static_cast<MQLONG>(QueueDepth(c.store->path, o.queue->state->directory));
     },
     nullptr},  // CURRENT_Q_DEPTH
    {4, [](const O& o, const C&) -> MQLONG { return QueueValues(o).defaultOpenExclusive != 0 ? 4 : 2; },
     nullptr},  // DEF_INPUT_OPEN_OPTION
    {5, [](const O& o, const C&) { return QueueValues(o).defaultPersistence; }, nullptr},  // DEF_PERSISTENCE
    {6, [](const O& o, const C&) { return QueueValues(o).defaultPriority; }, nullptr},     // DEF_PRIORITY
    {8, [](const O&, const C&) -> MQLONG { return 1; }, nullptr},                     // HARDEN_GET_BACKOUT
    {9, [](const O& o, const C&) { return QueueValues(o).getInhibited; }, nullptr},   // INHIBIT_GET
    {10, [](const O& o, const C&) { return QueueValues(o).putInhibited; }, nullptr},  // INHIBIT_PUT
    {13, [](const O& o, const C&) { return QueueValues(o).maxMessageLength; }, nullptr},  // MAX_MSG_LENGTH
    {15, [](const O& o, const C&) { return QueueValues(o).maxDepth; }, nullptr},          // MAX_Q_DEPTH
    {16, [](const O&, const C&) -> MQLONG { return 1; }, nullptr},  // MSG_DELIVERY_SEQUENCE
    {17, [](const O& o, const C&) { return InputOpenCount(o.queue->state->path); },
     nullptr},                                                                            // OPEN_INPUT_COUNT
    {20, [](const O&, const C&) -> MQLONG { return 1; }, nullptr},                        // Q_TYPE: local
    {22, [](const O& o, const C&) { return QueueValues(o).backoutThreshold; }, nullptr},  // BACKOUT_THRESHOLD
    {23, [](const O& o, const C&) { return QueueValues(o).shareable; }, nullptr},         // SHAREABILITY
    {2016, nullptr, [](const O& o, const C&) { return o.queue->state->object; }},         // Q_NAME
    {2019, nullptr, [](const O& o, const C&) { return QueueValues(o).backoutQueue; }},  // BACKOUT_REQ_Q_NAME
};

const Selector kQmgrSelectors[] = {
    {2, [](const O&, const C& c) { return QmgrValues(c).ccsid; }, nullptr},              // CODED_CHAR_SET_ID
    {11, [](const O&, const C&) -> MQLONG { return 999999999; }, nullptr},               // MAX_HANDLES
    {13, [](const O&, const C& c) { return QmgrValues(c).maxMessageLength; }, nullptr},  // MAX_MSG_LENGTH
    {30, [](const O&, const C&) -> MQLONG { return 1; }, nullptr},    // SYNCPOINT: available
    {31, [](const O&, const C&) -> MQLONG { return 900; }, nullptr},  // COMMAND_LEVEL
    {32, [](const O&, const C&) -> MQLONG { return kPlatformApplType == 11 ? 11 : 3; }, nullptr},  // PLATFORM
    {33, [](const O&, const C& c) { return QmgrValues(c).maxUncommitted; }, nullptr},  // MAX_UNCOMMITTED_MSGS
    {2015, nullptr, [](const O&, const C& c) { return c.store->object; }},             // Q_MGR_NAME
};

const Selector* FindSelector(bool isQueue, MQLONG selector) {
    const Selector* const begin = isQueue ? std::begin(kQueueSelectors) : std::begin(kQmgrSelectors);
    const Selector* const end = isQueue ? std::end(kQueueSelectors) : std::end(kQmgrSelectors);
    for (const Selector* row = begin; row != end; ++row) {
        if (row->selector == selector) {
            return row;
        }
    }
    return nullptr;
}

struct Inquiry {
    MQLONG selectorCount;
    const MQLONG* selectors;
    MQLONG numberCount;
    MQLONG* numbers;
    MQLONG textLength;
    char* text;
};

Outcome CheckInquiry(const Inquiry& inquiry, bool isQueue) {
    if (inquiry.selectorCount < 0 || inquiry.selectorCount > 256) {
        return Failed(mqi::MQRC_SELECTOR_COUNT_ERROR);
    }
    if (inquiry.selectorCount > 0 && inquiry.selectors == nullptr) {
        return Failed(mqi::MQRC_SELECTOR_ERROR);
    }
    if (inquiry.numberCount < 0) {
        return Failed(mqi::MQRC_INT_ATTR_COUNT_ERROR);
    }
    if (inquiry.textLength < 0) {
        return Failed(mqi::MQRC_CHAR_ATTR_LENGTH_ERROR);
    }
    for (MQLONG i = 0; i < inquiry.selectorCount; ++i) {
        if (FindSelector(isQueue, inquiry.selectors[i]) != nullptr) {
            continue;
        }
        const bool isOfOther = FindSelector(!isQueue, inquiry.selectors[i]) != nullptr;
        return Failed(isOfOther ? mqi::MQRC_SELECTOR_NOT_FOR_TYPE : mqi::MQRC_SELECTOR_ERROR);
    }
    return kOk;
}

// Fills the caller's areas with the attributes. Returns a warning if an area is too small for all of them.
Outcome Answer(const Inquiry& inquiry, const OpenObject& object, const Connection& connection) {
    Outcome outcome = kOk;
    MQLONG numbers = 0;
    std::size_t used = 0;
    for (MQLONG i = 0; i < inquiry.selectorCount; ++i) {
        const Selector* row = FindSelector(object.queue != nullptr, inquiry.selectors[i]);
        if (row->number != nullptr) {
            if (numbers >= inquiry.numberCount) {
                outcome = Warning(mqi::MQRC_INT_ATTR_COUNT_TOO_SMALL);
            } else {
                inquiry.numbers[numbers++] = row->number(object, connection);
            }
            continue;
        }
        char value[kNameChars];
        FillField(value, sizeof value, row->text(object, connection));
        const std::size_t room = static_cast<std::size_t>(inquiry.textLength) - used;
        const std::size_t copied = std::min(room, sizeof value);
        if (copied > 0) {
            std::memcpy(inquiry.text + used, value, copied);
        }
        used += copied;
        if (copied < sizeof value) {
            outcome = Warning(mqi::MQRC_CHAR_ATTRS_TOO_SHORT);
        }
    }
    // The rest of the area is filled with blanks.
    if (inquiry.text != nullptr) {
        std::memset(inquiry.text + used, ' ', static_cast<std::size_t>(inquiry.textLength) - used);
    }
    return outcome;
}

Outcome Inquire(MQHCONN connectionHandle, MQHOBJ handle, const Inquiry& inquiry) {
    EnteredConnection entered;
    OpenObject* object = nullptr;
    Outcome outcome = EnterConnection(connectionHandle, entered);
    if (outcome.compCode == MQCC_OK) {
        outcome = CheckQueueManager(*entered.connection, false);
    }
    if (outcome.compCode == MQCC_OK) {
        outcome = FindObject(*entered.connection, handle, object);
    }
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    if ((object->options & mqi::MQOO_INQUIRE) == 0) {
        return Failed(mqi::MQRC_NOT_OPEN_FOR_INQUIRE);
    }
    outcome = CheckInquiry(inquiry, object->queue != nullptr);
    if (outcome.compCode != MQCC_OK) {
        return outcome;
    }
    const Status status = object->queue != nullptr ? RefreshQueue(*object->queue) : Status();
    if (!status.IsOk()) {
        ReportProblem(status.error);
    }
    return Answer(inquiry, *object, *entered.connection);
}

}  // namespace
}  // namespace spoolmq

using namespace spoolmq;

SPOOLMQ_EXPORT void MQINQ(MQHCONN Hconn, MQHOBJ Hobj, MQLONG SelectorCount, MQLONG* Selectors,
                          MQLONG IntAttrCount, MQLONG* IntAttrs, MQLONG CharAttrLength, MQCHAR* CharAttrs,
                          MQLONG* CompCode, MQLONG* Reason) {
    const Inquiry inquiry = {SelectorCount, Selectors, IntAttrCount, IntAttrs, CharAttrLength, CharAttrs};
    RunVerb(Verb::kMqinq, Hconn, CompCode, Reason, [&] { return Inquire(Hconn, Hobj, inquiry); });
}
