// The stand-in as a client sees it: the library loaded at run time, the verbs looked up by name.
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

/// Path of the library that stands for IBM's mqm (client false) or mqic.
[[nodiscard]] std::string MqLibraryPath(bool client);
/// An exported verb, null when there is none of that name. Ends the process when the library cannot be
/// loaded.
[[nodiscard]] void* FindVerb(const std::string& libraryPath, const char* name);
/// Loaded on first use.
[[nodiscard]] const MqLibrary& Mq();
/// The same from the client library.
[[nodiscard]] const MqLibrary& MqClient();
