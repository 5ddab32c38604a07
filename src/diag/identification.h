// Who the module is: its name, its versions and the banner made of them.
#pragma once

/// The module id string: banner, help title, every error text, the answer to ID.
inline constexpr char kModuleId[] = "Norvane Websphere MQ AMOD";

/// The module's version (banner, help) and that of its code (banner, the answer to ID): they differ on
/// purpose.
inline constexpr char kModuleVersion[] = "16.20.00.04";
inline constexpr char kCodeVersion[] = "16.20.00.03";

/// Writes the six lines of the banner, whatever the trace level, and takes the report time: to the trace file
/// when one is open, else to both report texts. Called on the very first call that the module receives, and
/// again when Init has opened the trace file.
void ShowModuleID();
