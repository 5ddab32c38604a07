// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/mqi/get_call.h"

#include "spoolmq/mqi/structures.h"

namespace spoolmq {

namespace {

constexpr MQLONG kSyncpointOptions =
    MQGMO_SYNCPOINT | MQGMO_NO_SYNCPOINT | mqi::MQGMO_SYNCPOINT_IF_PERSISTENT;
constexpr MQLONG kBrowseOptions =
    mqi::MQGMO_BROWSE_FIRST | mqi::MQGMO_BROWSE_NEXT | mqi::MQGMO_BROWSE_MSG_UNDER_CURSOR;
constexpr MQLONG kLockOptions = mqi::MQGMO_LOCK | mqi::MQGMO_UNLOCK;
constexpr MQLONG kOpenForInputOptions = MQOO_INPUT_AS_Q_DEF | mqi::MQOO_INPUT_SHARED | MQOO_INPUT_EXCLUSIVE;
constexpr MQLONG kPublishedGetOptions = 0x1FFFFFFF;
constexpr MQLONG kPublishedMatchOptions = 63;
// The stand-in has no signals, locks or marks, and cannot skip a back-out. Options about groups, segments and
// properties are accepted, because they make no difference to messages that have none.
constexpr MQLONG kUnsupportedOptions = mqi::MQGMO_SET_SIGNAL | kLockOptions | 128 | 0x01F00000;

Outcome CheckOptions(const mqi::MQGMO& gmo) {
    const MQLONG options = gmo.Options;
    if ((options & ~kPublishedGetOptions) != 0 || !HasAtMostOneBit(options & kSyncpointOptions) ||
        !HasAtMostOneBit(options & (kBrowseOptions | mqi::MQGMO_MSG_UNDER_CURSOR))) {
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    }
    if ((options & MQGMO_SYNCPOINT) != 0 && (options & (kBrowseOptions | kLockOptions)) != 0) {
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    }
    if ((options & MQGMO_WAIT) != 0 && (options & mqi::MQGMO_SET_SIGNAL) != 0) {
        return Failed(mqi::MQRC_OPTIONS_ERROR);
    }
    if ((options & kUnsupportedOptions) != 0) {
        return Failed(mqi::MQRC_FUNCTION_NOT_SUPPORTED);
    }
    if ((options & MQGMO_WAIT) != 0 && gmo.WaitInterval < mqi::MQWI_UNLIMITED) {
        return Failed(mqi::MQRC_WAIT_INTERVAL_ERROR);
    }
    if (gmo.Version >= 2 && (gmo.MatchOptions & ~kPublishedMatchOptions) != 0) {
        return Failed(mqi::MQRC_MATCH_OPTIONS_ERROR);
    }
    return kOk;
}

}  // namespace

Outcome CheckCall(const GetCall& call, GetState& get) {
    if (!LoadStructure(call.md, get.md)) {
        return Failed(mqi::MQRC_MD_ERROR);
    }
    if (!LoadStructure(call.gmo, get.gmo)) {
        return Failed(mqi::MQRC_GMO_ERROR);
    }
    if (call.bufferLength < 0) {
        return Failed(mqi::MQRC_BUFFER_LENGTH_ERROR);
    }
    if (call.bufferLength > 0 && call.buffer == nullptr) {
        return Failed(mqi::MQRC_BUFFER_ERROR);
    }
    if (call.dataLength == nullptr) {
        return Failed(mqi::MQRC_DATA_LENGTH_ERROR);
    }
    if (get.connection->isClient && call.bufferLength > get.connection->messageLimit) {
        return Failed(mqi::MQRC_DATA_LENGTH_ERROR);
    }
    return CheckOptions(get.gmo);
}

Outcome CheckObject(GetState& get) {
    get.isBrowse = Has(get, kBrowseOptions);
    const OpenObject& object = *get.object;
    const bool usesCursor = get.isBrowse || Has(get, mqi::MQGMO_MSG_UNDER_CURSOR);
    if (object.queue == nullptr) {
        return Failed(mqi::MQRC_NOT_OPEN_FOR_INPUT);
    }
    if (usesCursor && (object.options & mqi::MQOO_BROWSE) == 0) {
        return Failed(mqi::MQRC_NOT_OPEN_FOR_BROWSE);
    }
    if (!get.isBrowse && (object.options & kOpenForInputOptions) == 0) {
        return Failed(mqi::MQRC_NOT_OPEN_FOR_INPUT);
    }
    return kOk;
}

void SetSelection(GetState& get) {
    const mqi::MQMD& md = get.md;
    // A structure of version 1 has no MatchOptions, so their default applies.
    const MQLONG match = get.gmo.MatchOptions;
    if ((match & mqi::MQMO_MATCH_MSG_ID) != 0 && !IsZero(md.MsgId, sizeof md.MsgId)) {
        get.selection.msgId = md.MsgId;
    }
    if ((match & mqi::MQMO_MATCH_CORREL_ID) != 0 && !IsZero(md.CorrelId, sizeof md.CorrelId)) {
        get.selection.correlId = md.CorrelId;
    }
}

}  // namespace spoolmq
