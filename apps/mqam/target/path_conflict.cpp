// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/path_conflict.h"

#include <filesystem>

namespace mqam {

namespace {

bool IsSameFile(const std::string& one, const std::string& other) {
    std::error_code missing;
    return one == other || std::filesystem::equivalent(one, other, missing);
}

}  // namespace

Status CheckPathConflicts(const std::vector<LoadFile>& files) {
    for (std::size_t i = 0; i < files.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (!IsSameFile(files[i].path, files[j].path)) continue;
            return Status::Refused(files[i].path + " cannot be both " + files[j].use + " and " +
                                   files[i].use + " of the load: give each a name of its own");
        }
    }
    return {};
}

}  // namespace mqam
