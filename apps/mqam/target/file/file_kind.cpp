// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/file_kind.h"

#include "mqam/target/file/file_target.h"
#include "mqam/target/file/restart_file.h"
#include "platform/file.h"

namespace mqam {

namespace {

Status CheckFileOptions(const TargetRequest& request) {
    if (request.name == "-") {
        return Status::Refused(
            "standard output cannot be truncated: a load that can be restarted needs a file (--to FILE)");
    }
    return {};
}

Status MakeFileTarget(const TargetRequest& request, std::unique_ptr<Target>& target) {
    const std::string path = RealPath(request.name);
    if (platform::ProbePath(path) == platform::PathKind::kOther) {
        return Status::Refused(
            path +
            " is not a file: a load that can be restarted needs one that can be truncated; "
            "for a device or a pipe give --unprotected");
    }
    target = std::make_unique<FileTarget>(FileTargetSettings{path, PlacesOfFile(path, request.restartFile),
                                                             request.format, request.force, request.append,
                                                             request.newlines});
    return {};
}

}  // namespace

const TargetKind kFileTargetKind = {
    "", "FILE", "a file", false, "restart file", CheckFileOptions, MakeFileTarget, ReadRestartFile,
};

}  // namespace mqam
