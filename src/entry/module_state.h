// The module's life as the dispatcher sees it.
#pragma once

/// 0 = not initialized, 1 = initialized, set by Init whatever its outcome, cleared by Shut.
[[nodiscard]] int ModuleState();
void SetModuleState(int moduleState);

/// Whether nothing has been asked of the queue since Open. Set by Open when the queue has been opened;
/// cleared by Init, Write, Read, GetPos, a successful SetPos and Close. No request acts on it.
void SetPositionUnchangedFlag(bool unchanged);

/// True on the first call of the process, false ever after.
[[nodiscard]] bool TakeFirstCall();
