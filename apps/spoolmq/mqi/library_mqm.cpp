// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/mqi/library_kind.h"

const bool spoolmq::kIsClientLibrary = false;
