// What a request promises when a file call fails under it: the return code and the error text, written out
// from what the host is told of each file, not taken from the module.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/fault_plan.h"
#include "tests/support/host_requests.h"

/// The place of a failure.
struct FileStrike {
    FileCall call;
    std::vector<std::string>
        calls;  ///< the file calls of the request so far, as FaultPlan logs them; the last one failed
                ///< unless it is a Print or FlushAll, which are not logged
    Fault fault;
    bool tlf;
    bool gotMessage;  ///< the request has got a message from the queue before
};

/// For the request under which the fault struck first in a life, or again.
testing::AssertionResult ReturnsAsPromised(const std::string& request, const Outcome& outcome,
                                           const FileStrike& strike);

/// For any other: it does not fail but by the lost commit, and by what a flush of all streams, which nobody
/// checks, has left to be found by a later one.
testing::AssertionResult IsUnaffected(const std::string& request, const Outcome& outcome, const Fault& fault);
