// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/file/file_kind.h"

#include "mqam/target/file/file_target.h"
#include "mqam/target/file/restart_file.h"
#include "platform/paths.h"

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
    target = std::make_unique<FileTarget>(
        FileTargetSettings{platform::AbsolutePath(request.name),
                           platform::FollowLinks(platform::AbsolutePath(request.restartFile)), request.format,
                           request.force, request.append});
    return {};
}

}  // namespace

const TargetKind kFileTargetKind = {
    "",
    "FILE",
    "a file; with --restart-file FILE the load is restartable",
    false,
    "restart file",
    CheckFileOptions,
    MakeFileTarget,
    ReadRestartFile,
};

}  // namespace mqam
