// SPDX-License-Identifier: Apache-2.0
// Makes the server library: a connection through it is a client connection only on request.

#include "spoolmq/mqi/library_kind.h"

const bool spoolmq::kIsClientLibrary = false;
