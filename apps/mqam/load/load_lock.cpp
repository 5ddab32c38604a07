#include "mqam/load/load_lock.h"

namespace mqam {

std::string CheckpointLockPath(const std::string& checkpointFile) {
    return checkpointFile + ".lock";
}

std::string DescribeHeldLock(const std::string& path) {
    return "another load is running (it holds " + path +
           "): wait for its end, or end it, then run the same command again";
}

std::string DescribeNoLock(const std::string& path) {
    return path +
           " holds something: it is not the lock of a load, and is left alone; move it away, then run the "
           "same command again";
}

std::string DescribeFailedLock(const std::string& path, const std::string& words) {
    return path + " cannot be made or locked: " + words +
           "; check that its folder is there and that you may write to it";
}

}  // namespace mqam
