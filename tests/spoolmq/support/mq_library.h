// SPDX-License-Identifier: Apache-2.0

// Loads the stand-in as a client does: the library is loaded at run time and the verbs are looked up by name.
#pragma once

#include <string>

#include "spoolmq/base/mqi_server.h"

struct MqLibrary {
    void (*Conn)(MQCHAR*, MQHCONN*, MQLONG*, MQLONG*);
    void (*Connx)(MQCHAR*, void*, MQHCONN*, MQLONG*, MQLONG*);
    void (*Disc)(MQHCONN*, MQLONG*, MQLONG*);
    void (*Open)(MQHCONN, void*, MQLONG, MQHOBJ*, MQLONG*, MQLONG*);
    void (*Close)(MQHCONN, MQHOBJ*, MQLONG, MQLONG*, MQLONG*);
    void (*Get)(MQHCONN, MQHOBJ, void*, void*, MQLONG, void*, MQLONG*, MQLONG*, MQLONG*);
    void (*Put)(MQHCONN, MQHOBJ, void*, void*, MQLONG, const void*, MQLONG*, MQLONG*);
    void (*Put1)(MQHCONN, void*, void*, void*, MQLONG, const void*, MQLONG*, MQLONG*);
    void (*Cmit)(MQHCONN, MQLONG*, MQLONG*);
    void (*Back)(MQHCONN, MQLONG*, MQLONG*);
    void (*Inq)(MQHCONN, MQHOBJ, MQLONG, const MQLONG*, MQLONG, MQLONG*, MQLONG, MQCHAR*, MQLONG*, MQLONG*);
};

/// Returns the path of the stand-in under the name of IBM's client library (mqic) or server library (mqm).
[[nodiscard]] std::string MqLibraryPath(bool isClient);
/// Returns the verb, or null if the library does not export it. Aborts if the library cannot be loaded.
[[nodiscard]] void* FindVerb(const std::string& libraryPath, const char* name);
/// Returns the verbs of mqm, loaded on first use.
[[nodiscard]] const MqLibrary& Mq();
/// Returns the verbs of mqic, loaded on first use.
[[nodiscard]] const MqLibrary& MqClient();
