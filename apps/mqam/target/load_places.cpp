// SPDX-License-Identifier: Apache-2.0
#include "mqam/target/load_places.h"

#include "platform/paths.h"

namespace mqam {

namespace {

std::string InDirectory(const std::string& directory, const char* name) {
    return platform::NativePath(directory + "/" + name);
}

}  // namespace

std::string RealPath(const std::string& path) {
    return platform::FollowLinks(platform::AbsolutePath(path));
}

LoadPlaces PlacesOfDatabase(const std::string& target) {
    LoadPlaces places;
    places.directory = target + kLoadDirectorySuffix;
    places.checkpointFile = InDirectory(places.directory, "checkpoint");
    return places;
}

LoadPlaces PlacesOfFile(const std::string& target, const std::string& restartFile) {
    LoadPlaces places = PlacesOfDatabase(target);
    places.restartFile =
        restartFile.empty() ? InDirectory(places.directory, "restart") : RealPath(restartFile);
    return places;
}

}  // namespace mqam
