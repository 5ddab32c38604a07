#include "mqi/session.h"

namespace {

struct Session {
    MQHCONN ConnectionHandle;
    MQHOBJ QueueHandle;
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
    const MQLONG sync = session.NextGetSync;
    session.NextGetSync = session.LaterGetSync;
    return sync;
}
