// The host's view of the module: the exported entry point, its two blocks, the option numbers, the return
// codes and the position that GetPos hands out. A host, and the tests, need no other header of the module.
//
// The blocks are packed and little-endian, and the host owns them. They may stand at any address and a host
// may pass a data block that ends behind the last field of the request: the module touches only the fields
// named here for the option, never a whole structure.
#pragma once

#include <cstddef>
#include <cstdint>

#include "diag/return_codes.h"
#include "recovery/position_data.h"

inline constexpr std::uint32_t pmiPIDMOptInit = 1;
inline constexpr std::uint32_t pmiPIDMOptOpen = 2;
inline constexpr std::uint32_t pmiPIDMOptClose = 3;
inline constexpr std::uint32_t pmiPIDMOptRead = 4;
inline constexpr std::uint32_t pmiPIDMOptWrite = 5;
inline constexpr std::uint32_t pmiPIDMOptGetPos = 6;
inline constexpr std::uint32_t pmiPIDMOptSetPos = 7;
inline constexpr std::uint32_t pmiPIDMOptShut = 8;
inline constexpr std::uint32_t pmiPIDMOptID = 9;
inline constexpr std::uint32_t pmiPIDMOptCloseR = 10;   ///< close/rewind, served as a close
inline constexpr std::uint32_t pmiPIDMOptGetAttr = 11;  ///< 12 is served alike
inline constexpr std::uint32_t pmiPIDMOptPutAttr = 13;  ///< 14 is served alike

inline constexpr std::uint16_t kFirstInterfaceVersion = 1001;
inline constexpr std::uint16_t kSecondInterfaceVersion = 2001;
inline constexpr std::int16_t kOpenForReading = 1;
inline constexpr std::size_t kAttributeNameBytes = 255;

#pragma pack(push, 1)

/// First argument of PIDMMain: names the request and receives its outcome.
struct RequestBlock {
    std::uint8_t host0[34];         ///< the host's own
    std::uint32_t OptCode;          ///< in: pmiPIDMOpt...
    std::uint32_t ReturnCode;       ///< out: pmrc...
    std::uint8_t host1[4];          ///< the host's own
    std::uint32_t ErrorTextLength;  ///< out: bytes allocated for the error text, 0 without one
    const char* ErrorText;  ///< out: NUL-terminated, the module's own and valid until its next error or Shut
};

struct InitBlock {
    std::uint8_t unused0[34];
    std::uint8_t clearedByInit[8];  ///< out: zeros
    std::uint16_t firstVersion;     ///< in: kFirstInterfaceVersion
    std::uint16_t secondVersion;    ///< in: kSecondInterfaceVersion
    std::uint8_t unused1[777];
    std::int32_t initStringLength;  ///< in: bytes
    const char* initString;         ///< in: not necessarily NUL-terminated
};

struct OpenBlock {
    std::uint8_t unused0[42];
    std::int16_t openMode;         ///< in: kOpenForReading
    std::uint16_t zero0;           ///< out: 0
    std::uint32_t maxRecordBytes;  ///< out: the BKSZ setting
    std::uint8_t zero1[8];         ///< out: zeros
    std::uint16_t pathNameLength;  ///< in: a path name is not needed; above 0 draws a warning
};

struct ReadBlock {
    std::uint8_t unused0[42];
    std::uint32_t recordLength;  ///< out: bytes placed in the buffer
    void* recordBuffer;          ///< in: at least BKSZ bytes
};

/// GetPos (out) and SetPos (in).
struct PositionBlock {
    std::uint8_t unused0[42];
    std::uint32_t positionLength;  ///< kPositionBytes
    const void* position;          ///< a PositionData; that of GetPos is the module's own: copy it at once
};

struct ShutBlock {
    std::uint8_t unused0[42];
    std::uint16_t closeMode;  ///< in: 1 = stop at the first MQ failure
};

struct IdBlock {
    std::uint8_t unused0[34];
    char identification[32];  ///< out
    char version[12];         ///< out
    std::uint8_t unused1[20];
    std::uint8_t zero[8];  ///< out: zeros
};

/// GetAttribute and PutAttribute. The value, valueLength bytes, follows the structure.
struct AttributeBlock {
    std::uint8_t unused0[46];
    char name[kAttributeNameBytes];  ///< in: ends at its NUL or with the field
    std::uint32_t valueLength;       ///< in: bytes
    char value[1];                   ///< in: valueLength bytes
};

#pragma pack(pop)

static_assert(offsetof(RequestBlock, OptCode) == 34 && offsetof(RequestBlock, ReturnCode) == 38 &&
              offsetof(RequestBlock, ErrorTextLength) == 46 && offsetof(RequestBlock, ErrorText) == 50 &&
              sizeof(RequestBlock) == 58);
static_assert(offsetof(InitBlock, clearedByInit) == 34 && offsetof(InitBlock, firstVersion) == 42 &&
              offsetof(InitBlock, secondVersion) == 44 && offsetof(InitBlock, initStringLength) == 823 &&
              offsetof(InitBlock, initString) == 827);
static_assert(offsetof(OpenBlock, openMode) == 42 && offsetof(OpenBlock, zero0) == 44 &&
              offsetof(OpenBlock, maxRecordBytes) == 46 && offsetof(OpenBlock, zero1) == 50 &&
              offsetof(OpenBlock, pathNameLength) == 58);
static_assert(offsetof(ReadBlock, recordLength) == 42 && offsetof(ReadBlock, recordBuffer) == 46);
static_assert(offsetof(PositionBlock, positionLength) == 42 && offsetof(PositionBlock, position) == 46);
static_assert(offsetof(ShutBlock, closeMode) == 42);
static_assert(offsetof(IdBlock, identification) == 34 && offsetof(IdBlock, version) == 66 &&
              offsetof(IdBlock, zero) == 98);
static_assert(offsetof(AttributeBlock, name) == 46 && offsetof(AttributeBlock, valueLength) == 301 &&
              offsetof(AttributeBlock, value) == 305);

/// Carries out one request.
///   request  in/out  OptCode names the request; ReturnCode, ErrorTextLength and ErrorText get its outcome
///   data     in/out  the block of the option, see above
/// Called from one thread, one call at a time. Returns nothing: the outcome is in the request block.
extern "C" void PIDMMain(RequestBlock* request, void* data);
using PIDMMainFunction = void (*)(RequestBlock* request, void* data);
