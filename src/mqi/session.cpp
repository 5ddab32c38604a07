// SPDX-License-Identifier: Apache-2.0
#include "mqi/session.h"

#include "platform/assert.h"

namespace mqamod {

namespace {

struct Session {
    // 0 when not connected. Set by Open, cleared by Close and Shut whatever MQDISC returns.
    MQHCONN ConnectionHandle;
    // 0 when no queue is open. Set by Open, cleared by Close and Shut whatever MQCLOSE returns.
    MQHOBJ QueueHandle;
    // The syncpoint option of the next MQGET and of the later ones. Set by Open, by each checkpoint and by
    // SetPos; never cleared.
    MQLONG NextGetSync;
    MQLONG LaterGetSync;
};
Session session;

}  // namespace

MQHCONN ConnectionHandle() {
    return session.ConnectionHandle;
}

void SetConnectionHandle(MQHCONN handle) {
    session.ConnectionHandle = handle;
}

MQHOBJ QueueHandle() {
    return session.QueueHandle;
}

void SetQueueHandle(MQHOBJ handle) {
    session.QueueHandle = handle;
}

void ChooseSyncpoint(MQLONG nextGetSync, MQLONG laterGetSync) {
    session.NextGetSync = nextGetSync;
    session.LaterGetSync = laterGetSync;
}

MQLONG TakeNextGetSync() {
    MQAMOD_ASSERT(session.NextGetSync != 0);
    const MQLONG sync = session.NextGetSync;
    session.NextGetSync = session.LaterGetSync;
    return sync;
}

}  // namespace mqamod
