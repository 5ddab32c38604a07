// The MQ library behind the verbs. The module calls MQCONNX, MQGET ... by name; those entry points
// (binding.cpp) pass each call to a library that is bound at run time, so that the module loads on a machine
// without IBM MQ.
//
// MQCONNX binds: the library that the environment variable MQAMOD_MQ_LIBRARY names, or else, by IBM's names,
// the client library before the server library when the connection is to be a client's (it carries a channel
// definition, or one of MQSERVER, MQCHLLIB, MQCHLTAB, MQCCDTURL is set), otherwise the other way round; each
// by the system's own search and then in IBM's default folder. A library that cannot be found or loaded makes
// MQCONNX fail with reason 2495 (MQRC_MODULE_NOT_FOUND), one that lacks a verb with 2497
// (MQRC_MODULE_ENTRY_NOT_FOUND). It is looked for again at each MQCONNX until one is bound; a bound library
// stays bound for the life of the process.
//
// The other verbs require a successful MQCONNX.
#pragma once

/// What the last MQCONNX could not bind: the libraries tried and the loader's reason for each, one line. Null
/// when it had a library. Valid until the next MQCONNX.
[[nodiscard]] const char* MqLibraryFailure();
