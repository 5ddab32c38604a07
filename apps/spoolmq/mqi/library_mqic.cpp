// SPDX-License-Identifier: Apache-2.0
// Makes the client library: every connection through it is a client connection.

#include "spoolmq/mqi/library_kind.h"

const bool spoolmq::kIsClientLibrary = true;
