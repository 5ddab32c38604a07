#include "spoolmq/base/status.h"

#include "spoolmq/os/os.h"

namespace spoolmq {

Status FileError(const std::string& path) {
    return {StatusCode::kFailed, path + ": " + LastOsErrorText()};
}

}  // namespace spoolmq
