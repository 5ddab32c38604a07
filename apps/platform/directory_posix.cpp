#include <dirent.h>

#include "platform/directory.h"

namespace platform {

std::vector<std::string> ListDirectory(const std::string& directory) {
    std::vector<std::string> names;
    DIR* listing = opendir(directory.empty() ? "." : directory.c_str());
    if (listing == nullptr) return names;
    while (const dirent* entry = readdir(listing)) {
        names.emplace_back(entry->d_name);
    }
    closedir(listing);
    return names;
}

}  // namespace platform
