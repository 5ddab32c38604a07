// The one thing in which the two libraries differ: every connection through the client library is a client's.
#pragma once

namespace spoolmq {
extern const bool kIsClientLibrary;
}
