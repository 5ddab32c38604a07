// SPDX-License-Identifier: Apache-2.0

// Declares the only difference between the client library and the server library.
#pragma once

namespace spoolmq {

/// Says whether every connection through this library is a client connection.
extern const bool kIsClientLibrary;

}  // namespace spoolmq
