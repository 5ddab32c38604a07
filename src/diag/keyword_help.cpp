// SPDX-License-Identifier: Apache-2.0
#include "diag/keyword_help.h"

#include "diag/module_id.h"
#include "diag/report_texts.h"
#include "diag/trace.h"

namespace mqamod {

namespace {

// Remembers that the help was shown. Only ShowKeywordHelp writes it.
struct HelpState {
    bool isShown;  // false when the module is loaded; set by the first HELP, never cleared
};
HelpState state;

// These pieces follow the title. A newline follows each of them, so a piece that begins or ends with a
// newline leaves an empty line. Users know these texts, so they keep their wording. Two flaws are kept on
// purpose: the channel and server keywords have no heading line, and the default of OTENACITY is given as 60,
// although it is 5.
constexpr const char* kPieces[] = {
    "\n"
    "-PARMFILE <parameter pathname>",
    "\n"
    "The named pathname is expected to contain text records.\n",
    "\n"
    " * Each record may contain a single keyword along with its value.\n"
    " * Empty lines as well as lines beginning with the pound ('#')\n"
    "   character will be ignored.\n"
    " * Keywords must begin in the first column.\n"
    " * All keywords are case insensitive.\n"
    " * Any unrecognized keywords or keywords with invalid values will\n"
    "   cause an immediate termination.",
    "\n"
    "Keywords may appear in either the parameter file or directly\n"
    "in the initialization string.  When keywords are used within\n"
    "the initialization string, they must be preceded by a dash ('-')",
    "\n"
    "The following is a list of valid keywords and, optionally,\n"
    "their valid values;",
    " TRCL <level> <pathname> {Set diagnostic trace level}",
    "      where level = {0...4} as follows;\n"
    "                     0: no diagnostic trace\n"
    "                     1: job events only reported\n"
    "                     2: I/O events\n"
    "                     3: I/O buffers\n"
    "                     4: detailed information\n"
    "      Default is zero (0), no trace.\n"
    "      The diagnostics will be directed to the pathname  specified in the second parameter",
    " BKSZ <bytes> {Set maximum MQ Series message size (used for buffering)}",
    "      where bytes = {1..16777216}\n"
    "      Default is 1048576 bytes.",
    " RWAIT <seconds> {Set MQGET wait time (if no message available)}",
    "      where seconds = {1..600} ('-1' indicates unlimited)\n"
    "      Default is 15 seconds.",
    " OWAIT <seconds> {Set MQOPEN retry time interval (if MQOPEN fails)}",
    "      where seconds = {1..600}\n"
    "      Default is 5 seconds.",
    " OTENACITY <seconds> {Set MQOPEN tenacity time (if MQOPEN fails)}",
    "      where seconds = {1..6000}\n"
    "      Default is 60 seconds.",
    " LOG <Log pathname> {Requests and directs Logging}",
    "      There is no default pathname (i.e., no Logging)",
    " TLF  <Yes|No> {Log failure causes termination}",
    "      where 'Yes' instructs the access module to terminate if unable to\n"
    "            write the Log for any reason.\n"
    "         and 'no' allows continuation with Logging disabled.\n"
    "      Requires that Logging (keyword 'LOG' ) be in effect.\n"
    "      Can not be used with MQ checkpoint support (keyword 'CKMQ' ) in effect.\n"
    "      Default is 'yes'.",
    " FLUSH  <Yes|No> {force checkpoint data to media}",
    "      where 'yes' instructs the access module to take measures to insure\n"
    "            that all checkpoint data is written to the media.\n"
    "         and 'no' allows the module to proceed without such measures.\n"
    "      File based checkpointing (Keyword 'CKFILE' ) must be in effect.\n"
    "      Default is 'no' as this option consumes significant resources.",
    " TDM  <Yes|No> {Duplicate message causes termination}",
    "      where 'Yes' instructs the access module to terminate if a potential\n"
    "            duplicate message is received.\n"
    "         and 'no' allows continuation.\n"
    "      Default is 'yes'.",
    " CONVERT {Requests that MQ convert message data}",
    "      Default is no conversion.",
    " CKFILE <checkpoint pathname> {Requests that File based checkpointing be supported}",
    "      Default is NO file based checkpoint.",
    " MQEX {Requests that MQ queue be opened exclusively}",
    "      Default is non-exclusive.",
    " QMGR  <name> {Establishes the MQ queue manager}",
    "      There in no default.  This parameter is REQUIRED.",
    " QNM  <name> {Establishes the MQ queue name}",
    "      There in no default.  This parameter is REQUIRED.",
    "      Default is to environment variable settings.",
    "      Neither is honored on MQ servers.",
};

}  // namespace

void ShowKeywordHelp() {
    if (state.isShown) return;
    state.isShown = true;
    SaveConsoleLine(FormatUntracedLine("MQA%04d:%s (ver %s): Command help;", 23, kModuleId, kModuleVersion));
    for (const char* piece : kPieces)
        SaveConsoleLine(piece);
}

}  // namespace mqamod
