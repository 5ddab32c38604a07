#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "platform/directory.h"

namespace platform {

std::vector<std::string> ListDirectory(const std::string& directory) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA found = {};
    HANDLE listing = FindFirstFileA((directory + "*").c_str(), &found);
    if (listing == INVALID_HANDLE_VALUE) return names;
    do {
        names.emplace_back(found.cFileName);
    } while (FindNextFileA(listing, &found) != 0);
    FindClose(listing);
    return names;
}

}  // namespace platform
