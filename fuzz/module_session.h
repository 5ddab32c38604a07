// SPDX-License-Identifier: Apache-2.0

// Makes a fresh module for every input. The module's state is process-wide and some of it survives even Shut,
// so an input would see what earlier inputs left. Here every input begins with the module as it is when it is
// loaded: its variables are restored to what they were before the first request.
#pragma once

/// Remembers the module's variables, binds the MQ double and discards standard output. It must be called once
/// per process, before the first request.
void PrepareModule();

/// Shuts the module, whatever state it is in, and makes a fresh one: memory and streams are released, and the
/// variables are those of a module that has just been loaded. Files stay.
void EndModuleSession();
