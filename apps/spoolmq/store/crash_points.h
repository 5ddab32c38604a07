// Named points of the store's work at which a test can end the process: the places where a kill is most
// delicate.
#pragma once

#include <string_view>

namespace spoolmq {

/// Called with the name of each point as it is passed; null, as it is at start, for nobody.
///   put-body      the body of a put is written, its descriptor is not
///   put-ready     body and descriptor are written, the message is not yet available
///   got           a message has been moved into a unit of work (or out of the queue, without syncpoint)
///   taken         a message got without syncpoint is about to go for good
///   marked        the commit of several messages is decided, nothing of it is done
///   commit-step   one message of a decided commit is done
///   done-moved    the commit of a single get is decided
///   return-step   one message of a back-out is back in its queue
///   recovered     a dead program's messages are back, its unit of work is not yet removed
using StorePointListener = void (*)(std::string_view point);

void SetStorePointListener(StorePointListener listener);
void PassStorePoint(std::string_view point);

}  // namespace spoolmq
