// SPDX-License-Identifier: Apache-2.0
#include "mqi/session.h"

#include "platform/assert.h"

namespace mqamod {

namespace {

struct Session {
    // This is 0 when there is no connection. Open sets it; Close and Shut clear it whatever MQDISC returns.
    MQHCONN ConnectionHandle;
    // This is 0 when no queue is open. Open sets it; Close and Shut clear it whatever MQCLOSE returns.
    MQHOBJ QueueHandle;
    // These are the syncpoint options of the next MQGET and of the later ones. Open, each checkpoint and
    // SetPos set them; nothing clears them.
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
