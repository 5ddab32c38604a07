// SPDX-License-Identifier: Apache-2.0

// The only difference between the two libraries.
#pragma once

namespace spoolmq {

/// Whether every connection through this library is a client connection.
extern const bool kIsClientLibrary;

}  // namespace spoolmq
