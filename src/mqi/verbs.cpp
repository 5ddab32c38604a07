// SPDX-License-Identifier: Apache-2.0
#include "mqi/verbs.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/os.h"

namespace mqamod {

namespace {

// Holds the outputs of one search.
struct Search {
    Verbs& verbs;
    char (&failure)[kBindFailureBytes];
};

void AddFailure(Search& search, const char* library, const char* reason) {
    const std::size_t used = std::strlen(search.failure);
    std::snprintf(search.failure + used, sizeof search.failure - used, "%s'%s' (%s)",
                  used == 0 ? "No MQ library could be bound. Tried " : ", ", library, reason);
}

template <typename Verb>
bool FindVerb(Search& search, void* library, const char* libraryName, const char* name, Verb* verb) {
    *verb = reinterpret_cast<Verb>(FindLibrarySymbol(library, name));
    if (*verb != nullptr) return true;
    char reason[64];
    std::snprintf(reason, sizeof reason, "entry point %s missing", name);
    AddFailure(search, libraryName, reason);
    return false;
}

// Binds the library with the given path or name. A library that loads but lacks a verb is a broken
// installation of MQ, so it ends the search.
MQLONG BindLibrary(Search& search, const char* name) {
    char reason[400];
    void* library = LoadSharedLibrary(name, reason, sizeof reason);
    if (library == nullptr) {
        AddFailure(search, name, reason);
        return MQRC_MODULE_NOT_FOUND;
    }
    Verbs verbs = {};
    const bool complete = FindVerb(search, library, name, "MQCONNX", &verbs.connx) &&
                          FindVerb(search, library, name, "MQDISC", &verbs.disc) &&
                          FindVerb(search, library, name, "MQOPEN", &verbs.open) &&
                          FindVerb(search, library, name, "MQCLOSE", &verbs.close) &&
                          FindVerb(search, library, name, "MQGET", &verbs.get) &&
                          FindVerb(search, library, name, "MQCMIT", &verbs.cmit) &&
                          FindVerb(search, library, name, "MQBACK", &verbs.back);
    if (!complete) return MQRC_MODULE_ENTRY_NOT_FOUND;
    search.verbs = verbs;
    return MQRC_NONE;
}

bool ClientConnectionWanted(const MQCNO* options) {
    if (options->ClientConnPtr != nullptr) return true;
    static constexpr const char* kClientVariables[] = {"MQSERVER", "MQCHLLIB", "MQCHLTAB", "MQCCDTURL"};
    for (const char* variable : kClientVariables) {
        if (std::getenv(variable) != nullptr) return true;
    }
    return false;
}

MQLONG BindByIbmNames(Search& search, bool clientFirst) {
    const char* names[] = {kMqLibraryNames.server, kMqLibraryNames.client};
    if (clientFirst) names[0] = kMqLibraryNames.client, names[1] = kMqLibraryNames.server;
    for (const char* name : names) {
        MQLONG reason = BindLibrary(search, name);
        if (reason != MQRC_MODULE_NOT_FOUND) return reason;
        char path[256];
        std::snprintf(path, sizeof path, "%s%s", kMqLibraryNames.defaultDirectory, name);
        reason = BindLibrary(search, path);
        if (reason != MQRC_MODULE_NOT_FOUND) return reason;
    }
    return MQRC_MODULE_NOT_FOUND;
}

}  // namespace

MQLONG BindVerbs(const char* path, const MQCNO* options, Verbs& verbs, char (&failure)[kBindFailureBytes]) {
    Search search = {verbs, failure};
    failure[0] = '\0';
    if (path != nullptr && path[0] != '\0') return BindLibrary(search, path);
    return BindByIbmNames(search, ClientConnectionWanted(options));
}

}  // namespace mqamod
