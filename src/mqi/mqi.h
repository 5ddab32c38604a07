// SPDX-License-Identifier: Apache-2.0

// Declares the part of IBM's Message Queue Interface that the module uses: types, structures, constants and
// verbs.
//
// Names, offsets, sizes and values are IBM's (IBM MQ documentation: "Data types used in the MQI", the topics
// of MQCNO, MQCD, MQOD, MQMD and MQGMO, and "IBM MQ constants"). Structures are declared up to the version
// that the module passes, which MQ allows as long as their Version field has no higher number: MQCNO 2, MQCD
// 6, the others 1. A test in tests/mqi compares this file with IBM's own headers on both targets. The names
// are global, as IBM's are.
//
// Character fields have a fixed width and no terminating NUL when they are full.
#pragma once

#include <cstddef>
#include <cstdint>

// IBM declares MQLONG as long on Windows and as int on 64-bit Linux. Both have four bytes.
using MQLONG = std::int32_t;
using MQHCONN = MQLONG;
using MQHOBJ = MQLONG;
using MQCHAR = char;
using MQBYTE = unsigned char;
using MQPTR = void*;

inline constexpr MQLONG MQCC_OK = 0;
inline constexpr MQLONG MQCC_WARNING = 1;
inline constexpr MQLONG MQCC_FAILED = 2;

inline constexpr MQLONG MQRC_NONE = 0;
inline constexpr MQLONG MQRC_SYNCPOINT_LIMIT_REACHED = 2024;
inline constexpr MQLONG MQRC_NO_MSG_AVAILABLE = 2033;
inline constexpr MQLONG MQRC_OBJECT_IN_USE = 2042;
inline constexpr MQLONG MQRC_Q_MGR_NAME_ERROR = 2058;
inline constexpr MQLONG MQRC_Q_MGR_NOT_AVAILABLE = 2059;
inline constexpr MQLONG MQRC_TRUNCATED_MSG_FAILED = 2080;
inline constexpr MQLONG MQRC_UNKNOWN_OBJECT_NAME = 2085;
inline constexpr MQLONG MQRC_MODULE_NOT_FOUND = 2495;
inline constexpr MQLONG MQRC_MODULE_ENTRY_NOT_FOUND = 2497;

inline constexpr MQLONG MQOO_INPUT_AS_Q_DEF = 1;
inline constexpr MQLONG MQOO_INPUT_EXCLUSIVE = 4;
inline constexpr MQLONG MQOO_FAIL_IF_QUIESCING = 8192;

inline constexpr MQLONG MQCO_NONE = 0;

inline constexpr MQLONG MQGMO_WAIT = 1;
inline constexpr MQLONG MQGMO_SYNCPOINT = 2;
inline constexpr MQLONG MQGMO_NO_SYNCPOINT = 4;
inline constexpr MQLONG MQGMO_CONVERT = 16384;

inline constexpr MQLONG MQENC_NATIVE = 546;
inline constexpr MQLONG MQCCSI_Q_MGR = 0;

inline constexpr MQLONG MQCNO_VERSION_1 = 1;
inline constexpr MQLONG MQCNO_VERSION_2 = 2;
inline constexpr MQLONG MQCD_VERSION_6 = 6;
inline constexpr MQLONG MQOD_VERSION_1 = 1;
inline constexpr MQLONG MQMD_VERSION_1 = 1;
inline constexpr MQLONG MQGMO_VERSION_1 = 1;

inline constexpr MQHCONN MQHC_DEF_HCONN = 0;
inline constexpr MQHOBJ MQHO_NONE = 0;

/// Connect options, versions 1 and 2.
struct MQCNO {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG Options;
    MQLONG ClientConnOffset;
    MQPTR ClientConnPtr;
};
static_assert(sizeof(MQCNO) == 24);

/// Channel definition of a client connection, versions 1 to 6.
struct MQCD {
    MQCHAR ChannelName[20];
    MQLONG Version;
    MQLONG ChannelType;
    MQLONG TransportType;
    MQCHAR Desc[64];
    MQCHAR QMgrName[48];
    MQCHAR XmitQName[48];
    MQCHAR ShortConnectionName[20];
    MQCHAR MCAName[20];
    MQCHAR ModeName[8];
    MQCHAR TpName[64];
    MQLONG BatchSize;
    MQLONG DiscInterval;
    MQLONG ShortRetryCount;
    MQLONG ShortRetryInterval;
    MQLONG LongRetryCount;
    MQLONG LongRetryInterval;
    MQCHAR SecurityExit[128];
    MQCHAR MsgExit[128];
    MQCHAR SendExit[128];
    MQCHAR ReceiveExit[128];
    MQLONG SeqNumberWrap;
    MQLONG MaxMsgLength;
    MQLONG PutAuthority;
    MQLONG DataConversion;
    MQCHAR SecurityUserData[32];
    MQCHAR MsgUserData[32];
    MQCHAR SendUserData[32];
    MQCHAR ReceiveUserData[32];
    MQCHAR UserIdentifier[12];
    MQCHAR Password[12];
    MQCHAR MCAUserIdentifier[12];
    MQLONG MCAType;
    MQCHAR ConnectionName[264];
    MQCHAR RemoteUserIdentifier[12];
    MQCHAR RemotePassword[12];
    MQCHAR MsgRetryExit[128];
    MQCHAR MsgRetryUserData[32];
    MQLONG MsgRetryCount;
    MQLONG MsgRetryInterval;
    MQLONG HeartbeatInterval;
    MQLONG BatchInterval;
    MQLONG NonPersistentMsgSpeed;
    MQLONG StrucLength;
    MQLONG ExitNameLength;
    MQLONG ExitDataLength;
    MQLONG MsgExitsDefined;
    MQLONG SendExitsDefined;
    MQLONG ReceiveExitsDefined;
    MQPTR MsgExitPtr;
    MQPTR MsgUserDataPtr;
    MQPTR SendExitPtr;
    MQPTR SendUserDataPtr;
    MQPTR ReceiveExitPtr;
    MQPTR ReceiveUserDataPtr;
    MQPTR ClusterPtr;
    MQLONG ClustersDefined;
    MQLONG NetworkPriority;
    MQLONG LongMCAUserIdLength;
    MQLONG LongRemoteUserIdLength;
    MQPTR LongMCAUserIdPtr;
    MQPTR LongRemoteUserIdPtr;
    MQBYTE MCASecurityId[40];
    MQBYTE RemoteSecurityId[40];
};
static_assert(sizeof(MQCD) == 1688);

/// Object descriptor, version 1.
struct MQOD {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG ObjectType;
    MQCHAR ObjectName[48];
    MQCHAR ObjectQMgrName[48];
    MQCHAR DynamicQName[48];
    MQCHAR AlternateUserId[12];
};
static_assert(sizeof(MQOD) == 168);

/// Message descriptor, version 1.
struct MQMD {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG Report;
    MQLONG MsgType;
    MQLONG Expiry;
    MQLONG Feedback;
    MQLONG Encoding;
    MQLONG CodedCharSetId;
    MQCHAR Format[8];
    MQLONG Priority;
    MQLONG Persistence;
    MQBYTE MsgId[24];
    MQBYTE CorrelId[24];
    MQLONG BackoutCount;
    MQCHAR ReplyToQ[48];
    MQCHAR ReplyToQMgr[48];
    MQCHAR UserIdentifier[12];
    MQBYTE AccountingToken[32];
    MQCHAR ApplIdentityData[32];
    MQLONG PutApplType;
    MQCHAR PutApplName[28];
    MQCHAR PutDate[8];
    MQCHAR PutTime[8];
    MQCHAR ApplOriginData[4];
};
static_assert(sizeof(MQMD) == 324);

/// Get-message options, version 1.
struct MQGMO {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG Options;
    MQLONG WaitInterval;
    MQLONG Signal1;
    MQLONG Signal2;
    MQCHAR ResolvedQName[48];
};
static_assert(sizeof(MQGMO) == 72);

// Each of these routines returns a structure with the values of IBM's initialiser (MQCNO_DEFAULT and so on).
// A field that is not set here is zero in IBM's initialiser, too.

constexpr MQCNO MqcnoDefault() {
    MQCNO cno{};
    cno.StrucId[0] = 'C', cno.StrucId[1] = 'N', cno.StrucId[2] = 'O', cno.StrucId[3] = ' ';
    cno.Version = MQCNO_VERSION_1;
    return cno;
}

/// MQCD_CLIENT_CONN_DEFAULT, with StrucLength the length of the structure as declared here.
constexpr MQCD MqcdClientConnDefault() {
    MQCD cd{};
    cd.Version = MQCD_VERSION_6;
    cd.ChannelType = 6;    // MQCHT_CLNTCONN
    cd.TransportType = 2;  // MQXPT_TCP
    cd.BatchSize = 50;
    cd.DiscInterval = 6000;
    cd.ShortRetryCount = 10;
    cd.ShortRetryInterval = 60;
    cd.LongRetryCount = 999999999;
    cd.LongRetryInterval = 1200;
    cd.SeqNumberWrap = 999999999;
    cd.MaxMsgLength = 4194304;
    cd.PutAuthority = 1;  // MQPA_DEFAULT
    cd.MCAType = 1;       // MQMCAT_PROCESS
    cd.MsgRetryCount = 10;
    cd.MsgRetryInterval = 1000;
    cd.HeartbeatInterval = 1;
    cd.NonPersistentMsgSpeed = 2;  // MQNPMS_FAST
    cd.StrucLength = sizeof(MQCD);
    cd.ExitNameLength = 128;
    cd.ExitDataLength = 32;
    return cd;
}

constexpr MQOD MqodDefault() {
    MQOD od{};
    od.StrucId[0] = 'O', od.StrucId[1] = 'D', od.StrucId[2] = ' ', od.StrucId[3] = ' ';
    od.Version = MQOD_VERSION_1;
    od.ObjectType = 1;  // MQOT_Q
    od.DynamicQName[0] = 'A', od.DynamicQName[1] = 'M', od.DynamicQName[2] = 'Q';
    od.DynamicQName[3] = '.', od.DynamicQName[4] = '*';
    return od;
}

constexpr MQMD MqmdDefault() {
    MQMD md{};
    md.StrucId[0] = 'M', md.StrucId[1] = 'D', md.StrucId[2] = ' ', md.StrucId[3] = ' ';
    md.Version = MQMD_VERSION_1;
    md.MsgType = 8;  // MQMT_DATAGRAM
    md.Expiry = -1;  // MQEI_UNLIMITED
    md.Encoding = MQENC_NATIVE;
    md.CodedCharSetId = MQCCSI_Q_MGR;
    for (MQCHAR& c : md.Format)
        c = ' ';         // MQFMT_NONE
    md.Priority = -1;    // MQPRI_PRIORITY_AS_Q_DEF
    md.Persistence = 2;  // MQPER_PERSISTENCE_AS_Q_DEF
    return md;
}

constexpr MQGMO MqgmoDefault() {
    MQGMO gmo{};
    gmo.StrucId[0] = 'G', gmo.StrucId[1] = 'M', gmo.StrucId[2] = 'O', gmo.StrucId[3] = ' ';
    gmo.Version = MQGMO_VERSION_1;
    return gmo;
}

// These are the verbs, with IBM's parameter lists (IBM MQ documentation: "Function calls"). In the module
// they are entry points that bind an MQ library at run time (mqi/binding.h); the stand-in queue manager
// defines them itself.
extern "C" {
void MQCONNX(MQCHAR* QMgrName, MQCNO* ConnectOpts, MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason);
void MQDISC(MQHCONN* Hconn, MQLONG* CompCode, MQLONG* Reason);
void MQOPEN(MQHCONN Hconn, MQPTR ObjDesc, MQLONG Options, MQHOBJ* Hobj, MQLONG* CompCode, MQLONG* Reason);
void MQCLOSE(MQHCONN Hconn, MQHOBJ* Hobj, MQLONG Options, MQLONG* CompCode, MQLONG* Reason);
void MQGET(MQHCONN Hconn, MQHOBJ Hobj, MQPTR MsgDesc, MQPTR GetMsgOpts, MQLONG BufferLength, MQPTR Buffer,
           MQLONG* DataLength, MQLONG* CompCode, MQLONG* Reason);
void MQCMIT(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason);
void MQBACK(MQHCONN Hconn, MQLONG* CompCode, MQLONG* Reason);
}
