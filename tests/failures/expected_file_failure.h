// SPDX-License-Identifier: Apache-2.0

// Says what a request promises when one of its file calls fails: the return code and the error text. They are
// written out from what is documented for each file, not taken from the module.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/fault_plan.h"
#include "tests/support/host_requests.h"

/// Describes where a failure happened.
struct FileStrike {
    FileCall call;
    std::vector<std::string>
        calls;  ///< the file calls of the request so far, as FaultPlan logs them; the last one failed
                ///< unless it is a Print or FlushAll, which are not logged
    Fault fault;
    bool tlf;
    bool gotMessage;  ///< the request had already got a message from the queue
};

/// Checks a request during which the fault struck, for the first time in an attempt or again.
testing::AssertionResult ReturnsAsPromised(const std::string& request, const Outcome& outcome,
                                           const FileStrike& strike);

/// Checks any other request. It may fail only because of the lost commit, or because an unchecked flush of
/// all streams has left an error that a later flush finds.
testing::AssertionResult IsUnaffected(const std::string& request, const Outcome& outcome, const Fault& fault);
