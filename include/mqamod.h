/* SPDX-License-Identifier: Apache-2.0 */

/*
 * mqamod.h - the host interface of the access module mqamod
 *
 * NAME
 *   PIDMMain - read the messages of one IBM MQ queue as the records of a load, restartably
 *
 * SYNOPSIS
 *   #include "mqamod.h"
 *   void PIDMMain(RequestBlock *request, void *data);
 *
 *   The module is one loadable library, mqamod.dll on 64-bit Windows and libmqamod.so on 64-bit Linux
 *   (x86-64). PIDMMain is its only export. A host loads the library at run time, looks PIDMMain up by name
 *   and casts the address to PIDMMainFunction; nothing has to be linked. The library must stay loaded until
 *   the process ends.
 *
 *   This header is complete: it can be copied into a host's own sources. It needs <stdint.h> and <stddef.h>
 *   and compiles as C99 and later and as C++11 and later.
 *
 * DESCRIPTION
 *   Each call carries out one request. The request block names the request (OptCode) and receives its
 *   outcome; the data block holds the inputs and outputs of that request. examples/host.c is a complete
 *   host.
 *
 *   Blocks. Both blocks are packed (no padding), every number in them is little-endian, and pointers have 8
 *   bytes. The host owns both blocks and everything that their input fields point to; the module uses none
 *   of it after the call. The blocks may lie at any address. The module reads and writes only the fields
 *   that this header documents for the request, so a data block may end after the last of them, and data
 *   may be null for a request without fields (Close, Write). The unused fields in the structures below only
 *   keep the others at their offsets.
 *
 *   Threads. The state of the module is process-wide and has no locks. All calls must come one at a time,
 *   and should come from one thread, since a connection to a queue manager belongs to the thread that made
 *   it. Two loads need two processes.
 *
 * ORDER OF CALLS
 *   1  Init            once, with the keywords (docs/parameters.md)
 *   2  PutAttribute    any number of times: PRESERVE_RESTART_INFO, TIMEOUT_SECONDS, ZBQ_HL_LOG_HANDLE
 *   3  Open            connects to the queue manager and opens the queue
 *   4  SetPos          only in a restarted load, before the first Read
 *   5  Read            until it returns pmrcEOF, with GetPos in between to take checkpoints
 *   6  Close, Shut     release what Open and Init acquired
 *   ID is allowed at any time. Every other request requires an Init that was not followed by a Shut; Init
 *   requires that there is none. Init counts even when it failed: Shut is required before the next Init.
 *
 * RESTARTABLE LOADS
 *   With the keyword CKFILE the module keeps every record since the host's last checkpoint in a checkpoint
 *   file. GetPos returns a position, which the host stores; the next Read then carries the checkpoint out.
 *   From then on each message is saved in the file before it is removed from the queue. After a failure a
 *   new process passes the stored position to SetPos, and Read first returns the records of the file again.
 *
 *   What the host must do, in brief (docs/hosts.md gives all rules, H1 to H25, and the reasons):
 *   - Put PRESERVE_RESTART_INFO=YES right after Init. Otherwise Close deletes the checkpoint file.
 *   - Call GetPos right after Open, before the first Read, unless the load is resumed with SetPos.
 *   - After each GetPos make the records durable that were read so far, then make the position durable,
 *     before the next Read, GetPos or SetPos. That Read discards the records that the position covers.
 *   - Take a further checkpoint only when at least one record was read since the last one, and none at the
 *     end of the input.
 *   - To resume: cut the target back to what the stored position covers, Open, SetPos, Read one record, then
 *     call GetPos at once. Unless CkPtMsgCount of the stored position is 0, that record is the last one that
 *     the target contains: compare it, and drop it. If CkPtMsgCount is 0, it is a new record.
 *   - Before that, complete what a crash interrupted. If the checkpoint file is missing, rename the
 *     temporary file MQAMtmp.<process number> in its directory to it; if both exist, delete the temporary
 *     file. Cut an incomplete record off the end of the checkpoint file.
 *   - A checkpoint file without one complete record (0 bytes, 4 bytes, or a torn first record) cannot be
 *     resumed from, and need not be: every record up to the position is loaded, and nothing was read after
 *     it. Open without SetPos and call GetPos.
 *   - One attempt per process. After pmrcFailure from Read, GetPos or SetPos end the process without Close
 *     and Shut: disconnecting would commit messages that were never delivered.
 *   - Treat pmrcEOF as the end of the attempt, not of the queue: Close, end the process, and resume once
 *     more. The load is done when an attempt finds nothing new and its last Read waited for all of RWAIT,
 *     provided that the attempt before it also ended with pmrcEOF and a Close that returned pmrcOK.
 *
 * OUTCOMES
 *   ReturnCode is the only measure of success: the error text of an earlier request stays attached to every
 *   later outcome, also a successful one, until a newer error replaces it or Shut frees it.
 *
 *   code              meaning                          what a host does
 *   pmrcOK            the request is done              continues
 *   pmrcEOF           Read: the end of the input, see  Close, Shut
 *                     Read for its causes
 *   pmrcBadVersion    Init: the version numbers are    corrects them; the module is still not initialized
 *                     not 1001 and 2001
 *   pmrcNotSupported  unknown option; Write;           continues; the request has no effect
 *                     GetAttribute
 *   pmrcBadAttrName   PutAttribute: unknown name       continues; the request has no effect
 *   pmrcFailure       the request failed, and          reports ErrorText; after Init or Open: Shut; after Read,
 *                     ErrorText explains why           GetPos or SetPos of a restartable load: ends the process
 *   pmrcBadAttrValue  PutAttribute: value refused      continues; the attribute keeps its value, but for the
 *                                                      log handle, which is replaced
 *   pmrcTimeout       Read: TIMEOUT_SECONDS have       Close, Shut, ends the process: every later Read would
 *                     passed                           return pmrcTimeout as well and drop a message
 *
 * ENVIRONMENT
 *   MQAMOD_MQ_LIBRARY names the MQ library to use. Without it IBM's libraries are looked up by their names.
 *   MQSERVER and IBM's other variables of client connections have the meaning that IBM gives them.
 */
#ifndef MQAMOD_H
#define MQAMOD_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Requests (RequestBlock.OptCode), each with its data block. "none" means that no byte of the data block is
 * read or written.
 */
#define pmiPIDMOptInit UINT32_C(1)     /* InitBlock: settings from the keywords; allocates                  */
#define pmiPIDMOptOpen UINT32_C(2)     /* OpenBlock: connect, open the queue and the files                  */
#define pmiPIDMOptClose UINT32_C(3)    /* none: release what Open acquired                                  */
#define pmiPIDMOptRead UINT32_C(4)     /* ReadBlock: the next record                                        */
#define pmiPIDMOptWrite UINT32_C(5)    /* none: always pmrcNotSupported, the module is read only            */
#define pmiPIDMOptGetPos UINT32_C(6)   /* PositionBlock: begin a checkpoint                                 */
#define pmiPIDMOptSetPos UINT32_C(7)   /* PositionBlock: return to a checkpoint                             */
#define pmiPIDMOptShut UINT32_C(8)     /* ShutBlock: Close, then free everything                            */
#define pmiPIDMOptID UINT32_C(9)       /* IdBlock: name and version of the module                           */
#define pmiPIDMOptCloseR UINT32_C(10)  /* none: Close, with a warning, since a queue cannot be rewound      */
#define pmiPIDMOptGetAttr UINT32_C(11) /* AttributeBlock: always pmrcNotSupported; 12 is served alike       */
#define pmiPIDMOptPutAttr UINT32_C(13) /* AttributeBlock: set an attribute; 14 is served alike              */

/* The outcome of a request (RequestBlock.ReturnCode); see OUTCOMES above. */
typedef int32_t ReturnCode;
#define pmrcOK INT32_C(0)
#define pmrcEOF INT32_C(9)
#define pmrcBadVersion INT32_C(18)
#define pmrcNotSupported INT32_C(24)
#define pmrcBadAttrName INT32_C(33)
#define pmrcFailure INT32_C(34)
#define pmrcBadAttrValue INT32_C(40)
#define pmrcTimeout INT32_C(55)

#pragma pack(push, 1)

/*
 * The first argument of PIDMMain. Bytes 0-33 and 42-45 belong to the host and are never touched. The module
 * owns the error text: the host must not free it. It stays valid until the next call.
 */
typedef struct RequestBlock {
    uint8_t host0[34];
    uint32_t OptCode;    /* 34 in: pmiPIDMOpt..., any other number returns pmrcNotSupported */
    uint32_t ReturnCode; /* 38 out: pmrc... */
    uint8_t host1[4];
    uint32_t ErrorTextLength; /* 46 out: bytes allocated for the error text, 0 when there is none */
    const char* ErrorText;    /* 50 out: the error text, NUL-terminated, or null (see above) */
} RequestBlock;

/*
 * Init reads the keywords and then, if one of them names it, the parameter file. A setting without a keyword
 * gets its default, except that MQEX, QMGR, QNM, CHNL and SRVR keep the value of an earlier Init of the same
 * process. On failure ErrorText names the first keyword that is wrong.
 */
typedef struct InitBlock {
    uint8_t unused0[34];
    uint8_t clearedByInit[8]; /* 34 out: 0, unless the versions are refused */
    uint16_t firstVersion;    /* 42 in: MQAMOD_FIRST_INTERFACE_VERSION */
    uint16_t secondVersion;   /* 44 in: MQAMOD_SECOND_INTERFACE_VERSION */
    uint8_t unused1[777];
    int32_t initStringLength; /* 823 in: bytes of the initialization string */
    const char* initString;   /* 827 in: "-KEYWORD value ...", not necessarily NUL-terminated */
} InitBlock;
#define MQAMOD_FIRST_INTERFACE_VERSION UINT16_C(1001)
#define MQAMOD_SECOND_INTERFACE_VERSION UINT16_C(2001)

/*
 * Open prints the start-up report to standard output, connects, opens the queue, and opens the message log
 * and the checkpoint file when the keywords LOG and CKFILE name them. A checkpoint file that exists is kept
 * for SetPos, unless this process has closed one before. The out fields are written when the queue was
 * opened, even if the checkpoint file could then not be opened.
 */
typedef struct OpenBlock {
    uint8_t unused0[42];
    int16_t openMode;        /* 42 in: MQAMOD_OPEN_FOR_READING */
    uint16_t zero0;          /* 44 out: 0 */
    uint32_t maxRecordBytes; /* 46 out: the longest record that Read will return (keyword BKSZ) */
    uint8_t zero1[8];        /* 50 out: 0 */
    uint16_t pathNameLength; /* 58 in: 0; another number only draws a warning */
} OpenBlock;
#define MQAMOD_OPEN_FOR_READING INT16_C(1)

/*
 * Read waits for the next message, for as long as the keyword RWAIT allows, and returns it as one record.
 * It returns pmrcEOF when no message came, for an empty message, for an MQGET that failed without data,
 * after GEN_EOF, at MQ's limit for a unit of work, and with the keyword TDM for a message that was
 * delivered before and equals the previous record. A record has at least 1 byte; only a replayed record may
 * have none, and such a record is to be ignored. After a Read without a record the contents of the buffer
 * are undefined.
 */
typedef struct ReadBlock {
    uint8_t unused0[42];
    uint32_t recordLength; /* 42 out: bytes of the record, 0 when none is returned */
    void* recordBuffer;    /* 46 in: the host's buffer, at least maxRecordBytes bytes */
} ReadBlock;

/*
 * The position of a checkpoint: 16 bytes that the host stores and passes back unchanged. Only the module
 * gives them a meaning, and only together with the checkpoint file.
 */
typedef struct PositionData {
    int32_t CkPtSeq;      /*  0 sequence number of the checkpoint */
    int32_t CkPtMsgCount; /*  4 records returned since Open when GetPos was called */
    int64_t CkPtOffset;   /*  8 place of a record in the checkpoint file; opaque, not a byte count */
} PositionData;
#define MQAMOD_POSITION_BYTES UINT32_C(16)

/*
 * GetPos returns a position and leaves the checkpoint pending: the next Read, or a SetPos to that position,
 * carries it out. A GetPos while one is pending carries it out instead of returning a position; it writes
 * nothing into the block and returns pmrcOK with a warning as the error text. The PositionData is the
 * module's own, and the next GetPos or SetPos changes it: copy it at once. SetPos begins the replay. It
 * fails when the checkpoint file is empty or belongs to a later checkpoint. Both fail without the keyword
 * CKFILE.
 */
typedef struct PositionBlock {
    uint8_t unused0[42];
    uint32_t positionLength; /* 42 GetPos out, SetPos in: MQAMOD_POSITION_BYTES */
    const void* position;    /* 46 GetPos out, SetPos in: a PositionData */
} PositionBlock;

/*
 * Shut closes what is open and frees all memory of the module, the error text included. With
 * MQAMOD_STOP_AT_FIRST_FAILURE it stops closing when MQ reports a failure, as Close does, and returns
 * pmrcFailure; with any other mode it continues and returns pmrcOK.
 */
typedef struct ShutBlock {
    uint8_t unused0[42];
    uint16_t closeMode; /* 42 in: MQAMOD_STOP_AT_FIRST_FAILURE or any other value */
} ShutBlock;
#define MQAMOD_STOP_AT_FIRST_FAILURE UINT16_C(1)

/* ID is served in every state. */
typedef struct IdBlock {
    uint8_t unused0[34];
    char identification[32]; /* 34 out: the name of the module, NUL-terminated */
    char version[12];        /* 66 out: its version, NUL-terminated */
    uint8_t unused1[20];
    uint8_t zero[8]; /* 98 out: 0 */
} IdBlock;

#define MQAMOD_ATTRIBUTE_NAME_BYTES 255

/*
 * PutAttribute and GetAttribute. Names and values are compared exactly, in upper and lower case as given
 * here.
 *
 *   name                   value             effect                                               lasts until
 *   PRESERVE_RESTART_INFO  YES or NO         Close and Shut keep the checkpoint file and the log  Shut
 *                                            (YES) or delete them (NO, the default)
 *   GEN_EOF                ignored           every Read returns pmrcEOF without asking the queue  Open
 *   TIMEOUT_SECONDS        decimal number    Read returns pmrcTimeout once it has waited longer   the process
 *                                            than that                                            ends
 *   ZBQ_HL_LOG_HANDLE      8 bytes: address  the start-up report goes to the host's log at once,  the process
 *                          of a log object   and Open prints the form made for that log           ends
 *   CHARSET_NAME, CHARSET_NUMBER, WRITE_BOM, BYTE_ORDER, Restart_Validation, CHECKPOINT_INTERVAL,
 *   EXPORT_WIDTHS          any               none: accepted and traced
 */
typedef struct AttributeBlock {
    uint8_t unused0[46];
    char name[MQAMOD_ATTRIBUTE_NAME_BYTES]; /* 46 in: ends at its NUL or with the field */
    uint32_t valueLength;                   /* 301 in: bytes of the value, with or without a final NUL */
    char value[1];                          /* 305 in: the value, which may extend beyond the structure */
} AttributeBlock;

#pragma pack(pop)

/*
 * The host's log, for hosts that put ZBQ_HL_LOG_HANDLE. The handle points to an object of the host; the
 * pointer at byte 16 of that object points to a table of functions, and the module calls entry 39 of that
 * table, counted from 0. It does so once for each PutAttribute, during that call, as
 *
 *   callback(handle, 19003, 2, 3, 5, buffer, 5, report, NULL)
 *
 * where buffer is a char * to 5 bytes, the first of which is 0, and report is a const char * to the
 * start-up report, NUL-terminated; both are valid during the call only, and the numbers 5 are ints. The
 * callback returns 0 to accept; any other result makes PutAttribute return pmrcBadAttrValue.
 */
typedef int (*HostLogCallback)(void* handle, int messageNumber, int, int, ...);
#define MQAMOD_LOG_TABLE_OFFSET 16
#define MQAMOD_LOG_TABLE_ENTRY 39

/*
 * Carries out one request.
 *   request  in/out  OptCode in; ReturnCode, ErrorText and ErrorTextLength out, in every case
 *   data     in/out  the data block of the request. A Read that returns pmrcEOF sets recordLength to 0
 * Each Open prints the start-up report to standard output, and a few other calls may print a line there. Each
 * call flushes all open output streams of the C library.
 */
void PIDMMain(RequestBlock* request, void* data);
typedef void (*PIDMMainFunction)(RequestBlock* request, void* data);

#ifdef __cplusplus
} /* extern "C" */
#endif

/* The offsets are part of the interface: a compiler that lays the structures out differently is refused. */
#if defined(__cplusplus)
#define MQAMOD_PIN(name, condition) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define MQAMOD_PIN(name, condition) _Static_assert(condition, #name)
#else
#define MQAMOD_PIN(name, condition) typedef char mqamod_pin_##name[(condition) ? 1 : -1]
#endif
#define MQAMOD_PIN_OFFSET(block, field, offset) \
    MQAMOD_PIN(block##_##field, offsetof(block, field) == (offset))

MQAMOD_PIN(pointer, sizeof(void*) == 8);
MQAMOD_PIN(RequestBlock, sizeof(RequestBlock) == 58);
MQAMOD_PIN_OFFSET(RequestBlock, OptCode, 34);
MQAMOD_PIN_OFFSET(RequestBlock, ReturnCode, 38);
MQAMOD_PIN_OFFSET(RequestBlock, ErrorTextLength, 46);
MQAMOD_PIN_OFFSET(RequestBlock, ErrorText, 50);
MQAMOD_PIN_OFFSET(InitBlock, clearedByInit, 34);
MQAMOD_PIN_OFFSET(InitBlock, firstVersion, 42);
MQAMOD_PIN_OFFSET(InitBlock, secondVersion, 44);
MQAMOD_PIN_OFFSET(InitBlock, initStringLength, 823);
MQAMOD_PIN_OFFSET(InitBlock, initString, 827);
MQAMOD_PIN_OFFSET(OpenBlock, openMode, 42);
MQAMOD_PIN_OFFSET(OpenBlock, zero0, 44);
MQAMOD_PIN_OFFSET(OpenBlock, maxRecordBytes, 46);
MQAMOD_PIN_OFFSET(OpenBlock, zero1, 50);
MQAMOD_PIN_OFFSET(OpenBlock, pathNameLength, 58);
MQAMOD_PIN_OFFSET(ReadBlock, recordLength, 42);
MQAMOD_PIN_OFFSET(ReadBlock, recordBuffer, 46);
MQAMOD_PIN(PositionData, sizeof(PositionData) == MQAMOD_POSITION_BYTES);
MQAMOD_PIN_OFFSET(PositionData, CkPtSeq, 0);
MQAMOD_PIN_OFFSET(PositionData, CkPtMsgCount, 4);
MQAMOD_PIN_OFFSET(PositionData, CkPtOffset, 8);
MQAMOD_PIN_OFFSET(PositionBlock, positionLength, 42);
MQAMOD_PIN_OFFSET(PositionBlock, position, 46);
MQAMOD_PIN_OFFSET(ShutBlock, closeMode, 42);
MQAMOD_PIN_OFFSET(IdBlock, identification, 34);
MQAMOD_PIN_OFFSET(IdBlock, version, 66);
MQAMOD_PIN_OFFSET(IdBlock, zero, 98);
MQAMOD_PIN_OFFSET(AttributeBlock, name, 46);
MQAMOD_PIN_OFFSET(AttributeBlock, valueLength, 301);
MQAMOD_PIN_OFFSET(AttributeBlock, value, 305);

#endif
