// SPDX-License-Identifier: Apache-2.0

// Creates, lists and deletes queue managers and queues. Directories that someone made by hand are treated the
// same way.
#pragma once

#include <string>
#include <vector>

#include "spoolmq/store/store.h"

namespace spoolmq {

/// These return the names in alphabetical order, or an empty list if the directory does not exist.
[[nodiscard]] std::vector<std::string> QueueManagerNames(const std::string& root);
[[nodiscard]] std::vector<std::string> QueueNames(const std::string& root, const std::string& qmgr);

/// Creates a queue manager, and the root directory if it is missing. Errors: kAlreadyExists (it is
/// unchanged), kFailed.
Status CreateQueueManager(const std::string& root, const std::string& name, const QmgrAttributes& attributes);
/// Creates a queue. Errors: kAlreadyExists (it is unchanged), kUnknownQueueManager, kFailed.
Status CreateQueue(const std::string& root, const std::string& qmgr, const std::string& name,
                   const QueueAttributes& attributes);

/// Deletes a queue with all its messages. Errors: kInUse (someone has it open for input, or messages are in
/// units of work), kUnknownQueue, kFailed.
Status DeleteQueue(const std::string& root, const std::string& qmgr, const std::string& name);
/// Deletes a queue manager with all its queues. Errors: kInUse (one of them is in use, or a program is
/// connected), kUnknownQueueManager, kFailed.
Status DeleteQueueManager(const std::string& root, const std::string& name);

}  // namespace spoolmq
