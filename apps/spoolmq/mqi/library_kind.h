// SPDX-License-Identifier: Apache-2.0

// Declares the only difference between the two libraries.
#pragma once

namespace spoolmq {

/// Every connection through this library is a client connection.
extern const bool kIsClientLibrary;

}  // namespace spoolmq
