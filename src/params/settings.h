// SPDX-License-Identifier: Apache-2.0

// Holds the settings: one value for each keyword, named like the keyword.
//
// Init resets some of them to their defaults; then each keyword that is given overwrites its setting. Only
// the routines of this directory write settings.
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
    // Each Init resets these to their defaults (ResetSettings). Between two Inits only LOG can change.

    /// The largest message in bytes, and the size of the record buffers.
    std::int32_t BKSZ;
    /// The wait for a message in milliseconds, or kUnlimitedWait.
    std::int32_t RWAIT;
    /// The seconds for which a failing open is repeated. Once Init has finished, this is the number of
    /// attempts.
    std::uint32_t OTENACITY;
    /// OTENACITY is divided by this number to get the number of attempts. It is also the pause between two
    /// attempts, in milliseconds.
    std::uint32_t OWAIT;
    /// Says whether a message log is kept. StopLogging clears this.
    bool LOG;
    /// Says whether a log failure ends the load. Init clears this if there is no log.
    bool TLF;
    /// Says whether a duplicate message ends the input.
    bool TDM;
    /// This is 0 for no conversion and 1 for conversion; any other value is the CCSID to convert to.
    std::int32_t CONVERT;
    /// This appears in the report and has no other effect: the checkpoint file is always flushed.
    bool FLUSH;
    /// Says whether FLUSH T was given, which has no effect.
    bool flushT;
    /// Says whether checkpoints are taken to a file.
    bool CKFILE;
    /// Says whether checkpoints are taken by MQ's own means (CKMQ in messages). No keyword sets this, so it
    /// is always false. The mode is kept on purpose: the code that depends on it defines what it would do.
    bool MqCheckpointMode;

    // The keywords set these, and nothing resets them: an Init without the keyword keeps the value of an
    // earlier Init of the same loaded module.

    /// Says whether the queue is opened exclusively.
    bool MQEX;
    bool qmgrGiven;
    bool qnmGiven;
    bool srvrGiven;
    bool chnlGiven;
    /// Both names are padded with zeros, because MQ always reads 48 bytes.
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

/// These are the same settings, for the routines of this directory to write.
extern Settings writableSettings;

/// Sets the defaults of the settings that each Init resets.
void ResetSettings();

}  // namespace mqamod
