// SPDX-License-Identifier: Apache-2.0

// Keeps the connection to the queue manager: the two handles and the syncpoint choice of the next gets.
#pragma once

#include "mqi/mqi.h"

namespace mqamod {

/// Returns the connection handle, which is 0 when there is no connection. A successful MQCONNX sets it;
/// CloseAll clears it.
[[nodiscard]] MQHCONN ConnectionHandle();
void SetConnectionHandle(MQHCONN handle);

/// Returns the handle of the open queue, which is 0 when no queue is open. An MQOPEN that did not fail sets
/// it; CloseAll clears it.
[[nodiscard]] MQHOBJ QueueHandle();
void SetQueueHandle(MQHOBJ handle);

/// Chooses MQGMO_SYNCPOINT or MQGMO_NO_SYNCPOINT for the next MQGET and for the later ones. Open sets both; a
/// checkpoint or a SetPos puts all gets under syncpoint. Close and Shut do not clear the choice.
void ChooseSyncpoint(MQLONG nextGetSync, MQLONG laterGetSync);

/// Returns the choice for the MQGET about to be made, and replaces it with the choice for later gets.
/// Requires an earlier ChooseSyncpoint.
[[nodiscard]] MQLONG TakeNextGetSync();

}  // namespace mqamod
