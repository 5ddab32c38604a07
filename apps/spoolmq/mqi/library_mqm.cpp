#include "spoolmq/mqi/library_kind.h"

const bool spoolmq::kIsClientLibrary = false;
