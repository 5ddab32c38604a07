// SPDX-License-Identifier: Apache-2.0

// Defines the name and the versions of the module.
#pragma once

namespace mqamod {

/// The name appears in the identification, the title of the help, every error text and the answer to ID.
inline constexpr char kModuleId[] = "Norvane Websphere MQ AMOD";

/// The version of the module (identification, help) and the version of its code (identification, answer to
/// ID) are different on purpose.
inline constexpr char kModuleVersion[] = "16.20.00.04";
inline constexpr char kCodeVersion[] = "16.20.00.03";

}  // namespace mqamod
