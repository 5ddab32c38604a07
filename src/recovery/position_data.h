// The position that GetPos hands out and SetPos takes back.
#pragma once

#include <cstdint>

#pragma pack(push, 1)

/// 16 bytes, little-endian, kept by the host with its own restart information. Meaningful only to this
/// module.
struct PositionData {
    std::int32_t CkPtSeq;       ///< sequence number of the checkpoint
    std::int32_t CkPtMsgCount;  ///< records returned since Open when GetPos was called
    std::int64_t
        CkPtOffset;  ///< stream position of the last record written to or read from the checkpoint file
};

#pragma pack(pop)

inline constexpr std::uint32_t kPositionBytes = 16;
static_assert(sizeof(PositionData) == kPositionBytes);
