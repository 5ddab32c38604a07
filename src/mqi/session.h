// The connection to the queue manager and what every layer above needs of it: the two handles and the
// syncpoint choice of the next gets.
#pragma once

#include "mqi/mqi.h"

/// The connection handle, 0 when not connected. Set by an MQCONNX that succeeded, cleared by CloseAll.
[[nodiscard]] MQHCONN ConnectionHandle();
void SetConnectionHandle(MQHCONN handle);

/// The handle of the open queue, 0 when no queue is open. Set by an MQOPEN that did not fail, cleared by
/// CloseAll.
[[nodiscard]] MQHOBJ QueueHandle();
void SetQueueHandle(MQHOBJ handle);

/// Chooses MQGMO_SYNCPOINT or MQGMO_NO_SYNCPOINT for the next MQGET and for those after it. Open chooses; a
/// checkpoint or a repositioning puts all gets under syncpoint. Neither Close nor Shut clears it.
void ChooseSyncpoint(MQLONG nextGetSync, MQLONG laterGetSync);

/// The choice for the MQGET about to be made; the choice for later gets then takes its place.
[[nodiscard]] MQLONG TakeNextGetSync();
