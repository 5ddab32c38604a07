// SPDX-License-Identifier: Apache-2.0
#include "platform/paths.h"

#include <filesystem>

namespace platform {

namespace {

namespace fs = std::filesystem;

// No system follows more links than this.
constexpr int kLinksMax = 40;

bool IsLink(const fs::path& path) {
    std::error_code missing;
    return fs::is_symlink(fs::symlink_status(path, missing));
}

bool EndsWithParent(const fs::path& path) {
    return path.filename() == "..";
}

}  // namespace

std::string AbsolutePath(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    if (error) return path;
    fs::path normal = absolute.root_path();
    for (const fs::path& part : absolute.relative_path()) {
        if (part.empty() || part == ".") continue;
        if (part != ".." || EndsWithParent(normal) || IsLink(normal)) {
            normal /= part;
        } else if (normal.has_relative_path()) {
            normal = normal.parent_path();
        }
    }
    return normal.make_preferred().string();
}

std::string FollowLinks(const std::string& path) {
    fs::path place = path;
    for (int i = 0; i < kLinksMax && IsLink(place); ++i) {
        std::error_code error;
        const fs::path leadsTo = fs::read_symlink(place, error);
        if (error) return path;
        place = AbsolutePath((place.parent_path() / leadsTo).string());
    }
    return place.string();
}

}  // namespace platform
