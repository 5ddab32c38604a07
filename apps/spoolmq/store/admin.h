// Making, listing and removing queue managers and queues. Making a folder by hand does as well.
#pragma once

#include <string>
#include <vector>

#include "spoolmq/store/store.h"

namespace spoolmq {

/// In alphabetical order; empty when the root is not there.
[[nodiscard]] std::vector<std::string> QueueManagerNames(const std::string& root);
[[nodiscard]] std::vector<std::string> QueueNames(const std::string& root, const std::string& qmgr);

/// Makes the root as needed. Exists: it is there and was left alone.
[[nodiscard]] StoreStatus CreateQueueManager(const std::string& root, const std::string& name,
                                             const QmgrAttributes& attributes, std::string* why);
[[nodiscard]] StoreStatus CreateQueue(const std::string& root, const std::string& qmgr,
                                      const std::string& name, const QueueAttributes& attributes,
                                      std::string* why);

/// Deletes a queue with all its messages. InUse: somebody has it open for input, or messages are in units of
/// work.
[[nodiscard]] StoreStatus DeleteQueue(const std::string& root, const std::string& qmgr,
                                      const std::string& name, std::string* why);
/// Deletes a queue manager with all its queues. InUse as above, for any of them, or somebody is connected.
[[nodiscard]] StoreStatus DeleteQueueManager(const std::string& root, const std::string& name,
                                             std::string* why);

}  // namespace spoolmq
