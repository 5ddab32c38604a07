// SPDX-License-Identifier: Apache-2.0

// Names points in the store's work at which a test can kill the process: the moments at which a kill would do
// the most harm.
#pragma once

#include <string_view>

namespace spoolmq {

/// The store calls this with the name of each point that the process reaches:
///   put-body      the body of a put is written, its descriptor is not
///   put-ready     body and descriptor are written, the message is not yet available
///   got           a message has been moved into a unit of work (or out of the queue, without syncpoint)
///   taken         a message got without syncpoint is about to be deleted
///   marked        the commit of several messages is decided, and none of it is done
///   commit-step   one message of a decided commit is done
///   done-moved    the commit of a single get is decided
///   return-step   one message of a back-out is back in its queue
///   recovered     a dead program's messages are back, and its unit of work still exists
using CrashPointListener = void (*)(std::string_view point);

/// Sets the listener of the process. Null, the initial value, means that there is no listener.
void SetCrashPointListener(CrashPointListener listener);
void ReachCrashPoint(std::string_view point);

}  // namespace spoolmq
