// SPDX-License-Identifier: Apache-2.0

// Declares the queue manager's side of IBM's Message Queue Interface: the structures in every published
// version, and the constants that a queue manager needs in addition to those of mqi/mqi.h.
//
// Names, offsets and values are IBM's (IBM MQ documentation, "Data types used in the MQI" and "IBM MQ
// constants"). The structures have a namespace of their own, because mqi/mqi.h declares the same names in the
// versions that the module passes.
#pragma once

#include <array>
#include <cstddef>

#include "mqi/mqi.h"

namespace mqi {

using MQHMSG = std::int64_t;

struct MQCHARV {
    MQPTR VSPtr;
    MQLONG VSOffset;
    MQLONG VSBufSize;
    MQLONG VSLength;
    MQLONG VSCCSID;
};
static_assert(sizeof(MQCHARV) == 24);

/// Connect options, versions 1 to 8.
struct MQCNO {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG Options;
    MQLONG ClientConnOffset;
    MQPTR ClientConnPtr;
    MQBYTE ConnTag[128];
    MQPTR SSLConfigPtr;
    MQLONG SSLConfigOffset;
    MQBYTE ConnectionId[24];
    MQLONG SecurityParmsOffset;
    MQPTR SecurityParmsPtr;
    MQPTR CCDTUrlPtr;
    MQLONG CCDTUrlOffset;
    MQLONG CCDTUrlLength;
    MQBYTE Reserved[8];
    MQCHAR ApplName[28];
    MQBYTE Reserved2[4];
    MQPTR BalanceParmsPtr;
    MQLONG BalanceParmsOffset;
    MQBYTE Reserved3[4];
};
static_assert(offsetof(MQCNO, ConnTag) == 24 && offsetof(MQCNO, SSLConfigPtr) == 152 &&
              offsetof(MQCNO, ConnectionId) == 164 && offsetof(MQCNO, SecurityParmsPtr) == 192 &&
              offsetof(MQCNO, CCDTUrlPtr) == 200 && offsetof(MQCNO, ApplName) == 224 &&
              offsetof(MQCNO, BalanceParmsPtr) == 256 && sizeof(MQCNO) == 272);

/// Object descriptor, versions 1 to 4.
struct MQOD {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG ObjectType;
    MQCHAR ObjectName[48];
    MQCHAR ObjectQMgrName[48];
    MQCHAR DynamicQName[48];
    MQCHAR AlternateUserId[12];
    MQLONG RecsPresent;
    MQLONG KnownDestCount;
    MQLONG UnknownDestCount;
    MQLONG InvalidDestCount;
    MQLONG ObjectRecOffset;
    MQLONG ResponseRecOffset;
    MQPTR ObjectRecPtr;
    MQPTR ResponseRecPtr;
    MQBYTE AlternateSecurityId[40];
    MQCHAR ResolvedQName[48];
    MQCHAR ResolvedQMgrName[48];
    MQCHARV ObjectString;
    MQCHARV SelectionString;
    MQCHARV ResObjectString;
    MQLONG ResolvedType;
};
static_assert(offsetof(MQOD, RecsPresent) == 168 && offsetof(MQOD, AlternateSecurityId) == 208 &&
              offsetof(MQOD, ResolvedQName) == 248 && offsetof(MQOD, ObjectString) == 344 &&
              offsetof(MQOD, ResolvedType) == 416 && sizeof(MQOD) == 424);

/// Message descriptor, versions 1 and 2.
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
    MQBYTE GroupId[24];
    MQLONG MsgSeqNumber;
    MQLONG Offset;
    MQLONG MsgFlags;
    MQLONG OriginalLength;
};
static_assert(offsetof(MQMD, MsgId) == 48 && offsetof(MQMD, BackoutCount) == 96 &&
              offsetof(MQMD, PutApplType) == 272 && offsetof(MQMD, PutDate) == 304 &&
              offsetof(MQMD, GroupId) == 324 && sizeof(MQMD) == 364);

/// Get-message options, versions 1 to 4.
struct MQGMO {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG Options;
    MQLONG WaitInterval;
    MQLONG Signal1;
    MQLONG Signal2;
    MQCHAR ResolvedQName[48];
    MQLONG MatchOptions;
    MQCHAR GroupStatus;
    MQCHAR SegmentStatus;
    MQCHAR Segmentation;
    MQCHAR Reserved1;
    MQBYTE MsgToken[16];
    MQLONG ReturnedLength;
    MQLONG Reserved2;
    MQHMSG MsgHandle;
};
static_assert(offsetof(MQGMO, MatchOptions) == 72 && offsetof(MQGMO, MsgToken) == 80 &&
              offsetof(MQGMO, ReturnedLength) == 96 && offsetof(MQGMO, MsgHandle) == 104 &&
              sizeof(MQGMO) == 112);

/// Put-message options, versions 1 to 3.
struct MQPMO {
    MQCHAR StrucId[4];
    MQLONG Version;
    MQLONG Options;
    MQLONG Timeout;
    MQHOBJ Context;
    MQLONG KnownDestCount;
    MQLONG UnknownDestCount;
    MQLONG InvalidDestCount;
    MQCHAR ResolvedQName[48];
    MQCHAR ResolvedQMgrName[48];
    MQLONG RecsPresent;
    MQLONG PutMsgRecFields;
    MQLONG PutMsgRecOffset;
    MQLONG ResponseRecOffset;
    MQPTR PutMsgRecPtr;
    MQPTR ResponseRecPtr;
    MQHMSG OriginalMsgHandle;
    MQHMSG NewMsgHandle;
    MQLONG Action;
    MQLONG PubLevel;
};
static_assert(offsetof(MQPMO, ResolvedQName) == 32 && offsetof(MQPMO, RecsPresent) == 128 &&
              offsetof(MQPMO, OriginalMsgHandle) == 160 && sizeof(MQPMO) == 184);

/// The start of a client's channel definition. Only the fields that the stand-in uses have names.
struct MQCDStart {
    MQCHAR ChannelName[20];
    MQLONG Version;
    MQLONG ChannelType;
    MQLONG TransportType;
    MQBYTE unused0[812];
    MQLONG MaxMsgLength;
    MQBYTE unused1[136];
    MQBYTE unusedVersion2[40];
    MQCHAR ConnectionName[264];
};
static_assert(offsetof(MQCDStart, MaxMsgLength) == 844 && offsetof(MQCDStart, ConnectionName) == 1024);

// A program that includes mqi/mqi.h passes its structures to the verbs of the stand-in, which use the ones
// above. So every member that both declare must have the same offset and size.
#define MQAMOD_ALIKE(type, member) \
    (offsetof(type, member) == offsetof(::type, member) && sizeof(type::member) == sizeof(::type::member))
static_assert(MQAMOD_ALIKE(MQCNO, StrucId) && MQAMOD_ALIKE(MQCNO, Version) && MQAMOD_ALIKE(MQCNO, Options) &&
              MQAMOD_ALIKE(MQCNO, ClientConnOffset) && MQAMOD_ALIKE(MQCNO, ClientConnPtr));
static_assert(MQAMOD_ALIKE(MQOD, StrucId) && MQAMOD_ALIKE(MQOD, Version) && MQAMOD_ALIKE(MQOD, ObjectType) &&
              MQAMOD_ALIKE(MQOD, ObjectName) && MQAMOD_ALIKE(MQOD, ObjectQMgrName) &&
              MQAMOD_ALIKE(MQOD, DynamicQName) && MQAMOD_ALIKE(MQOD, AlternateUserId));
static_assert(MQAMOD_ALIKE(MQMD, StrucId) && MQAMOD_ALIKE(MQMD, Version) && MQAMOD_ALIKE(MQMD, Report) &&
              MQAMOD_ALIKE(MQMD, MsgType) && MQAMOD_ALIKE(MQMD, Expiry) && MQAMOD_ALIKE(MQMD, Feedback) &&
              MQAMOD_ALIKE(MQMD, Encoding) && MQAMOD_ALIKE(MQMD, CodedCharSetId) &&
              MQAMOD_ALIKE(MQMD, Format) && MQAMOD_ALIKE(MQMD, Priority) && MQAMOD_ALIKE(MQMD, Persistence) &&
              MQAMOD_ALIKE(MQMD, MsgId) && MQAMOD_ALIKE(MQMD, CorrelId) && MQAMOD_ALIKE(MQMD, BackoutCount) &&
              MQAMOD_ALIKE(MQMD, ReplyToQ) && MQAMOD_ALIKE(MQMD, ReplyToQMgr) &&
              MQAMOD_ALIKE(MQMD, UserIdentifier) && MQAMOD_ALIKE(MQMD, AccountingToken) &&
              MQAMOD_ALIKE(MQMD, ApplIdentityData) && MQAMOD_ALIKE(MQMD, PutApplType) &&
              MQAMOD_ALIKE(MQMD, PutApplName) && MQAMOD_ALIKE(MQMD, PutDate) && MQAMOD_ALIKE(MQMD, PutTime) &&
              MQAMOD_ALIKE(MQMD, ApplOriginData));
static_assert(MQAMOD_ALIKE(MQGMO, StrucId) && MQAMOD_ALIKE(MQGMO, Version) && MQAMOD_ALIKE(MQGMO, Options) &&
              MQAMOD_ALIKE(MQGMO, WaitInterval) && MQAMOD_ALIKE(MQGMO, Signal1) &&
              MQAMOD_ALIKE(MQGMO, Signal2) && MQAMOD_ALIKE(MQGMO, ResolvedQName));
static_assert(offsetof(MQCDStart, ChannelName) == offsetof(::MQCD, ChannelName) &&
              offsetof(MQCDStart, Version) == offsetof(::MQCD, Version) &&
              offsetof(MQCDStart, ChannelType) == offsetof(::MQCD, ChannelType) &&
              offsetof(MQCDStart, TransportType) == offsetof(::MQCD, TransportType) &&
              offsetof(MQCDStart, MaxMsgLength) == offsetof(::MQCD, MaxMsgLength) &&
              offsetof(MQCDStart, ConnectionName) == offsetof(::MQCD, ConnectionName) &&
              sizeof(MQCDStart::ConnectionName) == sizeof(::MQCD::ConnectionName));
#undef MQAMOD_ALIKE

inline constexpr MQLONG MQRC_ALREADY_CONNECTED = 2002;
inline constexpr MQLONG MQRC_BACKED_OUT = 2003;
inline constexpr MQLONG MQRC_BUFFER_ERROR = 2004;
inline constexpr MQLONG MQRC_BUFFER_LENGTH_ERROR = 2005;
inline constexpr MQLONG MQRC_CONNECTION_BROKEN = 2009;
inline constexpr MQLONG MQRC_DATA_LENGTH_ERROR = 2010;
inline constexpr MQLONG MQRC_ENVIRONMENT_ERROR = 2012;
inline constexpr MQLONG MQRC_GET_INHIBITED = 2016;
inline constexpr MQLONG MQRC_CHAR_ATTR_LENGTH_ERROR = 2006;
inline constexpr MQLONG MQRC_CHAR_ATTRS_TOO_SHORT = 2008;
inline constexpr MQLONG MQRC_HCONN_ERROR = 2018;
inline constexpr MQLONG MQRC_HOBJ_ERROR = 2019;
inline constexpr MQLONG MQRC_INT_ATTR_COUNT_ERROR = 2021;
inline constexpr MQLONG MQRC_INT_ATTR_COUNT_TOO_SMALL = 2022;
inline constexpr MQLONG MQRC_MD_ERROR = 2026;
inline constexpr MQLONG MQRC_MSG_TOO_BIG_FOR_Q = 2030;
inline constexpr MQLONG MQRC_MSG_TOO_BIG_FOR_Q_MGR = 2031;
inline constexpr MQLONG MQRC_NO_MSG_UNDER_CURSOR = 2034;
inline constexpr MQLONG MQRC_NOT_OPEN_FOR_BROWSE = 2036;
inline constexpr MQLONG MQRC_NOT_OPEN_FOR_INPUT = 2037;
inline constexpr MQLONG MQRC_NOT_OPEN_FOR_INQUIRE = 2038;
inline constexpr MQLONG MQRC_NOT_OPEN_FOR_OUTPUT = 2039;
inline constexpr MQLONG MQRC_OBJECT_TYPE_ERROR = 2043;
inline constexpr MQLONG MQRC_OD_ERROR = 2044;
inline constexpr MQLONG MQRC_OPTION_NOT_VALID_FOR_TYPE = 2045;
inline constexpr MQLONG MQRC_OPTIONS_ERROR = 2046;
inline constexpr MQLONG MQRC_PERSISTENCE_ERROR = 2047;
inline constexpr MQLONG MQRC_PRIORITY_ERROR = 2050;
inline constexpr MQLONG MQRC_PUT_INHIBITED = 2051;
inline constexpr MQLONG MQRC_Q_DELETED = 2052;
inline constexpr MQLONG MQRC_Q_FULL = 2053;
inline constexpr MQLONG MQRC_SELECTOR_COUNT_ERROR = 2065;
inline constexpr MQLONG MQRC_SELECTOR_ERROR = 2067;
inline constexpr MQLONG MQRC_SELECTOR_NOT_FOR_TYPE = 2068;
inline constexpr MQLONG MQRC_STORAGE_NOT_AVAILABLE = 2071;
inline constexpr MQLONG MQRC_TRUNCATED_MSG_ACCEPTED = 2079;
inline constexpr MQLONG MQRC_UNKNOWN_OBJECT_Q_MGR = 2086;
inline constexpr MQLONG MQRC_WAIT_INTERVAL_ERROR = 2090;
inline constexpr MQLONG MQRC_RESOURCE_PROBLEM = 2102;
inline constexpr MQLONG MQRC_ANOTHER_Q_MGR_CONNECTED = 2103;
inline constexpr MQLONG MQRC_FORMAT_ERROR = 2110;
inline constexpr MQLONG MQRC_SOURCE_CCSID_ERROR = 2111;
inline constexpr MQLONG MQRC_SOURCE_INTEGER_ENC_ERROR = 2112;
inline constexpr MQLONG MQRC_TARGET_CCSID_ERROR = 2115;
inline constexpr MQLONG MQRC_TARGET_INTEGER_ENC_ERROR = 2116;
inline constexpr MQLONG MQRC_NOT_CONVERTED = 2119;
inline constexpr MQLONG MQRC_CONVERTED_MSG_TOO_BIG = 2120;
inline constexpr MQLONG MQRC_CNO_ERROR = 2139;
inline constexpr MQLONG MQRC_Q_MGR_QUIESCING = 2161;
inline constexpr MQLONG MQRC_Q_MGR_STOPPING = 2162;
inline constexpr MQLONG MQRC_PMO_ERROR = 2173;
inline constexpr MQLONG MQRC_GMO_ERROR = 2186;
inline constexpr MQLONG MQRC_UNEXPECTED_ERROR = 2195;
inline constexpr MQLONG MQRC_CALL_IN_PROGRESS = 2219;
inline constexpr MQLONG MQRC_MATCH_OPTIONS_ERROR = 2247;
inline constexpr MQLONG MQRC_WRONG_GMO_VERSION = 2256;
inline constexpr MQLONG MQRC_CD_ERROR = 2277;
inline constexpr MQLONG MQRC_CLIENT_CONN_ERROR = 2278;
inline constexpr MQLONG MQRC_FUNCTION_NOT_SUPPORTED = 2298;
inline constexpr MQLONG MQRC_HOST_NOT_AVAILABLE = 2538;
inline constexpr MQLONG MQRC_UNKNOWN_CHANNEL_NAME = 2540;

inline constexpr MQHCONN MQHC_UNUSABLE_HCONN = -1;
inline constexpr MQHOBJ MQHO_UNUSABLE_HOBJ = -1;

inline constexpr MQLONG MQCNO_HANDLE_SHARE_NONE = 0x20;
inline constexpr MQLONG MQCNO_HANDLE_SHARE_BLOCK = 0x40;
inline constexpr MQLONG MQCNO_HANDLE_SHARE_NO_BLOCK = 0x80;
inline constexpr MQLONG MQCNO_FASTPATH_BINDING = 0x1;
inline constexpr MQLONG MQCNO_SHARED_BINDING = 0x100;
inline constexpr MQLONG MQCNO_ISOLATED_BINDING = 0x200;
inline constexpr MQLONG MQCNO_LOCAL_BINDING = 0x400;
inline constexpr MQLONG MQCNO_CLIENT_BINDING = 0x800;

inline constexpr MQLONG MQOT_Q = 1;
inline constexpr MQLONG MQOT_Q_MGR = 5;

inline constexpr MQLONG MQOO_INPUT_SHARED = 2;
inline constexpr MQLONG MQOO_BROWSE = 8;
inline constexpr MQLONG MQOO_OUTPUT = 16;
inline constexpr MQLONG MQOO_INQUIRE = 32;
inline constexpr MQLONG MQOO_SET_IDENTITY_CONTEXT = 1024;
inline constexpr MQLONG MQOO_SET_ALL_CONTEXT = 2048;

inline constexpr MQLONG MQGMO_SET_SIGNAL = 8;
inline constexpr MQLONG MQGMO_BROWSE_FIRST = 16;
inline constexpr MQLONG MQGMO_BROWSE_NEXT = 32;
inline constexpr MQLONG MQGMO_ACCEPT_TRUNCATED_MSG = 64;
inline constexpr MQLONG MQGMO_MSG_UNDER_CURSOR = 256;
inline constexpr MQLONG MQGMO_LOCK = 512;
inline constexpr MQLONG MQGMO_UNLOCK = 1024;
inline constexpr MQLONG MQGMO_BROWSE_MSG_UNDER_CURSOR = 2048;
inline constexpr MQLONG MQGMO_SYNCPOINT_IF_PERSISTENT = 4096;
inline constexpr MQLONG MQGMO_FAIL_IF_QUIESCING = 8192;

inline constexpr MQLONG MQMO_MATCH_MSG_ID = 1;
inline constexpr MQLONG MQMO_MATCH_CORREL_ID = 2;

inline constexpr MQLONG MQPMO_SYNCPOINT = 2;
inline constexpr MQLONG MQPMO_NO_SYNCPOINT = 4;
inline constexpr MQLONG MQPMO_NEW_MSG_ID = 64;
inline constexpr MQLONG MQPMO_NEW_CORREL_ID = 128;
inline constexpr MQLONG MQPMO_SET_IDENTITY_CONTEXT = 1024;
inline constexpr MQLONG MQPMO_SET_ALL_CONTEXT = 2048;
inline constexpr MQLONG MQPMO_FAIL_IF_QUIESCING = 8192;
inline constexpr MQLONG MQPMO_NO_CONTEXT = 16384;

inline constexpr MQLONG MQPER_NOT_PERSISTENT = 0;
inline constexpr MQLONG MQPER_PERSISTENT = 1;
inline constexpr MQLONG MQPER_PERSISTENCE_AS_Q_DEF = 2;
inline constexpr MQLONG MQPRI_PRIORITY_AS_Q_DEF = -1;
inline constexpr MQLONG MQWI_UNLIMITED = -1;

constexpr MQMD MqmdDefault() {
    MQMD md{};
    md.StrucId[0] = 'M', md.StrucId[1] = 'D', md.StrucId[2] = ' ', md.StrucId[3] = ' ';
    md.Version = 2;
    md.MsgType = 8;  // MQMT_DATAGRAM
    md.Expiry = -1;  // MQEI_UNLIMITED
    md.Encoding = MQENC_NATIVE;
    for (MQCHAR& c : md.Format)
        c = ' ';  // MQFMT_NONE
    md.Priority = MQPRI_PRIORITY_AS_Q_DEF;
    md.Persistence = MQPER_PERSISTENCE_AS_Q_DEF;
    md.MsgSeqNumber = 1;
    md.OriginalLength = -1;  // MQOL_UNDEFINED
    return md;
}

}  // namespace mqi
