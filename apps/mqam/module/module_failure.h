// SPDX-License-Identifier: Apache-2.0

// Describes a failed request of the module: which one, its code and its error text.
#pragma once

#include <string>

#include "mqamod.h"

namespace mqam {

/// A request that did not succeed.
struct ModuleFailure {
    std::string request;       ///< "Init", "Open", "PutAttribute NAME" ...
    ReturnCode code = pmrcOK;  ///< what PIDMMain returned
    std::string text;          ///< the module's error text; empty if there is none
};

}  // namespace mqam
