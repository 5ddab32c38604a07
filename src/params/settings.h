// SPDX-License-Identifier: Apache-2.0

// The settings: one value for each keyword, named like the keyword.
//
// Init resets some of them to their defaults; then the keywords overwrite what they name. Only this directory
// and StopLogging write settings.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mqamod {

inline constexpr std::int32_t kMaxPathCharacters = 32766;
inline constexpr std::size_t kPathBytes = kMaxPathCharacters + 1;
inline constexpr std::int32_t kMaxNameCharacters = 48;  // queue managers and queues
inline constexpr std::int32_t kMaxBlockSize = 16777216;
inline constexpr std::int32_t kMaxWaitSeconds = 600;  // RWAIT and OWAIT
inline constexpr std::int32_t kMaxTenacitySeconds = 6000;
inline constexpr std::int32_t kUnlimitedWait = -1;

struct Settings {
    // Reset to their defaults by each Init (ResetSettings), and never in between, except for LOG.

    /// The largest message in bytes, and the size of the record buffers.
    std::int32_t BKSZ;
    /// The wait for a message in milliseconds, or kUnlimitedWait.
    std::int32_t RWAIT;
    /// For how many seconds a failing open is repeated; once Init has finished, the number of attempts.
    std::uint32_t OTENACITY;
    /// OTENACITY is divided by this number to get the number of attempts. The same number is the pause between two
    /// attempts, in milliseconds.
    std::uint32_t OWAIT;
    /// Keep a message log. StopLogging clears it as well.
    bool LOG;
    /// A log failure ends the load. Init clears it if there is no log.
    bool TLF;
    /// A duplicate message ends the input.
    bool TDM;
    /// 0 for no conversion, 1 for conversion, any other value is the CCSID to convert to.
    std::int32_t CONVERT;
    /// Appears in the report and has no other effect: the checkpoint file is always flushed.
    bool FLUSH;
    /// FLUSH T was given. It has no effect.
    bool flushT;
    /// Take checkpoints to a file.
    bool CKFILE;
    /// Take checkpoints by MQ's own means (CKMQ in messages). No keyword sets it, so it is always off. The
    /// mode is kept on purpose: the code that depends on it defines what it would do.
    bool MqCheckpointMode;

    // Set by their keywords and never reset: an Init without the keyword keeps the value of an earlier Init
    // of the same loaded module.

    /// Open the queue exclusively.
    bool MQEX;
    bool qmgrGiven;
    bool qnmGiven;
    bool srvrGiven;
    bool chnlGiven;
    /// Both names are filled with zeros, because MQ reads 48 bytes.
    char QMGR[kMaxNameCharacters + 1];
    char QNM[kMaxNameCharacters + 1];
    char tracePath[kPathBytes];
    char logPath[kPathBytes];
    char checkpointPath[kPathBytes];
    /// The path of the temporary checkpoint file. Each Init that asks for checkpoints derives it.
    char FilePathTemp[kPathBytes];
};

/// Returns the settings in effect.
[[nodiscard]] const Settings& Setting();

/// Switches logging off until an Init asks for a log again.
void StopLogging();

/// Write access, for the routines of this directory.
extern Settings writableSettings;

/// Sets the defaults of the settings that each Init resets.
void ResetSettings();

}  // namespace mqamod
