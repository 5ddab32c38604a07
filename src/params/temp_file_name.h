// The name of the temporary checkpoint file.
#pragma once

#include "mqamod.h"
#include "params/settings.h"

/// Builds "MQAMtmp." and the process number, in the folder of the checkpoint file.
///   name  out  at most 32766 characters
/// Returns pmrcOK; or pmrcFailure, with an error text, when the name would be longer.
[[nodiscard]] ReturnCode BuildTempFileName(const char* checkpointPath, char (&name)[kPathBytes]);
