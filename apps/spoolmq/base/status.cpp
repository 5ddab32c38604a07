// SPDX-License-Identifier: Apache-2.0
#include "spoolmq/base/status.h"

namespace spoolmq {

Status FileError(const std::string& path) {
    return {StatusCode::kFailed, path + ": " + platform::LastFileError()};
}

}  // namespace spoolmq
