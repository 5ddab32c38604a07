// The settings: one value for each keyword, named by the keyword itself.
//
// Each Init resets the defaults and the keywords then overwrite them; what is not reset keeps the value of an
// earlier Init of the same loaded module. Only this folder writes them (settings_writer.h); everybody reads
// them here.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::int32_t kMaxPathCharacters = 32766;
inline constexpr std::size_t kPathBytes = kMaxPathCharacters + 1;
inline constexpr std::int32_t kMaxNameCharacters = 48;  ///< queue managers and queues
inline constexpr std::int32_t kMaxBlockSize = 16777216;
inline constexpr std::int32_t kUnlimitedWait = -1;
inline constexpr std::int32_t kMaxWaitSeconds = 600;
inline constexpr std::int32_t kMaxTenacitySeconds = 6000;

struct Settings {
    // Reset by every Init.
    std::int32_t BKSZ;   ///< largest message in bytes; the size of the record buffers
    std::int32_t RWAIT;  ///< wait for a message in milliseconds, or kUnlimitedWait
    std::uint32_t
        OTENACITY;         ///< seconds for which a failing open is retried; after Init the number of attempts
    std::uint32_t OWAIT;   ///< seconds between attempts
    bool LOG;              ///< keep a message log; also switched off when a log failure is survived
    bool TLF;              ///< a log failure ends the load; off whenever LOG is
    bool TDM;              ///< a duplicate message ends the input
    std::int32_t CONVERT;  ///< 0 no conversion, 1 convert, else the CCSID to convert to
    bool FLUSH;            ///< reported, never consulted: the checkpoint file is flushed always
    bool flushT;           ///< FLUSH T: kept without effect
    bool CKFILE;           ///< checkpoint to a file
    bool MqCheckpointMode;  ///< CKMQ: checkpoint by MQ means; no keyword switches it on

    // Not reset.
    bool MQEX;  ///< open the queue exclusively
    bool qmgrGiven;
    bool qnmGiven;
    bool srvrGiven;
    bool chnlGiven;
    char QMGR[kMaxNameCharacters + 1];  ///< zero-filled behind the name: MQ reads 48 bytes
    char QNM[kMaxNameCharacters + 1];
    char tracePath[kPathBytes];
    char logPath[kPathBytes];
    char checkpointPath[kPathBytes];
    char FilePathTemp[kPathBytes];  ///< temporary checkpoint file, derived at the end of Init
};

/// The settings in effect.
[[nodiscard]] const Settings& Setting();

/// Switches logging off until an Init asks for a log again.
void StopLogging();
