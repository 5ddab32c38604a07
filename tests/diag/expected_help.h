// SPDX-License-Identifier: Apache-2.0

// Contains the keyword help, byte for byte. Each piece is one line of the console report, although some
// pieces contain line ends of their own.
#pragma once

inline constexpr const char* kHelpPieces[] = {
    R"(MQA0023:Norvane Websphere MQ AMOD (ver 16.20.00.04): Command help;)",
    R"(
-PARMFILE <parameter pathname>)",
    R"(
The named pathname is expected to contain text records.
)",
    R"(
 * Each record may contain a single keyword along with its value.
 * Empty lines as well as lines beginning with the pound ('#')
   character will be ignored.
 * Keywords must begin in the first column.
 * All keywords are case insensitive.
 * Any unrecognized keywords or keywords with invalid values will
   cause an immediate termination.)",
    R"(
Keywords may appear in either the parameter file or directly
in the initialization string.  When keywords are used within
the initialization string, they must be preceded by a dash ('-'))",
    R"(
The following is a list of valid keywords and, optionally,
their valid values;)",
    R"( TRCL <level> <pathname> {Set diagnostic trace level})",
    R"(      where level = {0...4} as follows;
                     0: no diagnostic trace
                     1: job events only reported
                     2: I/O events
                     3: I/O buffers
                     4: detailed information
      Default is zero (0), no trace.
      The diagnostics will be directed to the pathname  specified in the second parameter)",
    R"( BKSZ <bytes> {Set maximum MQ Series message size (used for buffering)})",
    R"(      where bytes = {1..16777216}
      Default is 1048576 bytes.)",
    R"( RWAIT <seconds> {Set MQGET wait time (if no message available)})",
    R"(      where seconds = {1..600} ('-1' indicates unlimited)
      Default is 15 seconds.)",
    R"( OWAIT <seconds> {Set MQOPEN retry time interval (if MQOPEN fails)})",
    R"(      where seconds = {1..600}
      Default is 5 seconds.)",
    R"( OTENACITY <seconds> {Set MQOPEN tenacity time (if MQOPEN fails)})",
    R"(      where seconds = {1..6000}
      Default is 60 seconds.)",
    R"( LOG <Log pathname> {Requests and directs Logging})",
    R"(      There is no default pathname (i.e., no Logging))",
    R"( TLF  <Yes|No> {Log failure causes termination})",
    R"(      where 'Yes' instructs the access module to terminate if unable to
            write the Log for any reason.
         and 'no' allows continuation with Logging disabled.
      Requires that Logging (keyword 'LOG' ) be in effect.
      Can not be used with MQ checkpoint support (keyword 'CKMQ' ) in effect.
      Default is 'yes'.)",
    R"( FLUSH  <Yes|No> {force checkpoint data to media})",
    R"(      where 'yes' instructs the access module to take measures to insure
            that all checkpoint data is written to the media.
         and 'no' allows the module to proceed without such measures.
      File based checkpointing (Keyword 'CKFILE' ) must be in effect.
      Default is 'no' as this option consumes significant resources.)",
    R"( TDM  <Yes|No> {Duplicate message causes termination})",
    R"(      where 'Yes' instructs the access module to terminate if a potential
            duplicate message is received.
         and 'no' allows continuation.
      Default is 'yes'.)",
    R"( CONVERT {Requests that MQ convert message data})",
    R"(      Default is no conversion.)",
    R"( CKFILE <checkpoint pathname> {Requests that File based checkpointing be supported})",
    R"(      Default is NO file based checkpoint.)",
    R"( MQEX {Requests that MQ queue be opened exclusively})",
    R"(      Default is non-exclusive.)",
    R"( QMGR  <name> {Establishes the MQ queue manager})",
    R"(      There in no default.  This parameter is REQUIRED.)",
    R"( QNM  <name> {Establishes the MQ queue name})",
    R"(      There in no default.  This parameter is REQUIRED.)",
    R"(      Default is to environment variable settings.)",
    R"(      Neither is honored on MQ servers.)",
};
