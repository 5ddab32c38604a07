// SPDX-License-Identifier: Apache-2.0

// Binds the MQ library that carries out the verbs. The module calls MQCONNX, MQGET ... by name. Those entry
// points (binding.cpp) pass each call to a library that is bound at run time, so that the module can be
// loaded on a machine without IBM MQ.
//
// MQCONNX binds the library that the environment variable MQAMOD_MQ_LIBRARY names, or one of IBM's libraries
// if it is not set (mqi/verbs.h). If no library can be loaded, it fails with reason 2495
// (MQRC_MODULE_NOT_FOUND); if the library lacks a verb, with 2497 (MQRC_MODULE_ENTRY_NOT_FOUND). Each MQCONNX
// searches again until a library is bound. A bound library stays bound until the process ends.
//
// The other verbs require a successful MQCONNX.
#pragma once

namespace mqamod {

/// Returns one line with the libraries that the last MQCONNX tried to bind, in order, each with the reason
/// why it was not bound; or null if a library was bound. The line is valid until the next MQCONNX.
[[nodiscard]] const char* MqLibraryFailure();

}  // namespace mqamod
