// SPDX-License-Identifier: Apache-2.0
#include "mqi/binding.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "mqi/mqi.h"
#include "platform/os.h"

namespace mqamod {

namespace {

struct Verbs {
    decltype(&MQCONNX) connx;
    decltype(&MQDISC) disc;
    decltype(&MQOPEN) open;
    decltype(&MQCLOSE) close;
    decltype(&MQGET) get;
    decltype(&MQCMIT) cmit;
    decltype(&MQBACK) back;
};
struct Binding {
    // These are the verbs of the bound library. All are null until one is bound; nothing clears them.
    Verbs verbs;
    // These are the libraries tried since the last MQCONNX began, with reasons. The text fits into the
    // message text together with what a report adds. Each MQCONNX that has to bind clears it.
    char failureText[900];
    // The last MQCONNX found no library. Each MQCONNX sets or clears this.
    bool failed;
};
Binding binding;

void AddFailure(const char* library, const char* reason) {
    const std::size_t used = std::strlen(binding.failureText);
    std::snprintf(binding.failureText + used, sizeof binding.failureText - used, "%s'%s' (%s)",
                  used == 0 ? "No MQ library could be bound. Tried " : ", ", library, reason);
}

template <typename Verb>
bool FindVerb(void* library, const char* libraryName, const char* name, Verb* verb) {
    *verb = reinterpret_cast<Verb>(FindLibrarySymbol(library, name));
    if (*verb != nullptr) return true;
    char reason[64];
    std::snprintf(reason, sizeof reason, "entry point %s missing", name);
    AddFailure(libraryName, reason);
    return false;
}

// Binds the library of that path or name. A library that loads but lacks a verb is a broken installation of
// MQ, so it ends the search.
MQLONG BindLibrary(const char* name) {
    char reason[400];
    void* library = LoadSharedLibrary(name, reason, sizeof reason);
    if (library == nullptr) {
        AddFailure(name, reason);
        return MQRC_MODULE_NOT_FOUND;
    }
    Verbs verbs = {};
    const bool complete =
        FindVerb(library, name, "MQCONNX", &verbs.connx) && FindVerb(library, name, "MQDISC", &verbs.disc) &&
        FindVerb(library, name, "MQOPEN", &verbs.open) && FindVerb(library, name, "MQCLOSE", &verbs.close) &&
        FindVerb(library, name, "MQGET", &verbs.get) && FindVerb(library, name, "MQCMIT", &verbs.cmit) &&
        FindVerb(library, name, "MQBACK", &verbs.back);
    if (!complete) return MQRC_MODULE_ENTRY_NOT_FOUND;
    binding.verbs = verbs;
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

MQLONG BindByIbmNames(bool clientFirst) {
    const char* names[] = {kMqLibraryNames.server, kMqLibraryNames.client};
    if (clientFirst) names[0] = kMqLibraryNames.client, names[1] = kMqLibraryNames.server;
    for (const char* name : names) {
        MQLONG reason = BindLibrary(name);
        if (reason != MQRC_MODULE_NOT_FOUND) return reason;
        char path[256];
        std::snprintf(path, sizeof path, "%s%s", kMqLibraryNames.defaultDirectory, name);
        reason = BindLibrary(path);
        if (reason != MQRC_MODULE_NOT_FOUND) return reason;
    }
    return MQRC_MODULE_NOT_FOUND;
}

MQLONG Bind(const MQCNO* options) {
    if (binding.verbs.connx != nullptr) return MQRC_NONE;
    binding.failureText[0] = '\0';
    const char* path = std::getenv("MQAMOD_MQ_LIBRARY");
    if (path != nullptr && path[0] != '\0') return BindLibrary(path);
    return BindByIbmNames(ClientConnectionWanted(options));
}

}  // namespace

const char* MqLibraryFailure() {
    return binding.failed ? binding.failureText : nullptr;
}

}  // namespace mqamod

// The verbs have IBM's names, so they are global.

using mqamod::Bind;
using mqamod::binding;

void MQCONNX(MQCHAR* QMgrName, MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    const MQLONG reason = Bind(ConnectOpts);
    binding.failed = reason != MQRC_NONE;
    if (binding.failed) {
        *CompCode = MQCC_FAILED;
        *Reason = reason;
        return;
    }
    binding.verbs.connx(QMgrName, ConnectOpts, Hconn, CompCode, Reason);
}

// The verbs below require a bound library: a handle exists only after a successful MQCONNX.

void MQDISC(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.disc(Hconn, CompCode, Reason);
}

void MQOPEN(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.open(Hconn, ObjDesc, Options, Hobj, CompCode, Reason);
}

void MQCLOSE(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.close(Hconn, Hobj, Options, CompCode, Reason);
}

void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength, MQPTR Buffer,
           MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.get(Hconn, Hobj, MsgDesc, GetMsgOpts, BufferLength, Buffer, DataLength, CompCode, Reason);
}

void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.cmit(Hconn, CompCode, Reason);
}

void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason) {
    binding.verbs.back(Hconn, CompCode, Reason);
}
