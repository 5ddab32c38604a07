// SPDX-License-Identifier: Apache-2.0

// Restores the module for every input. The module's state is process-wide and some of it survives even Shut,
// so an input would see what earlier inputs left. Therefore its variables are restored to the values that
// they had before the first request, so that every input begins with the module in the state of a new process.
#pragma once

/// Remembers the module's variables, binds the MQ double and discards standard output. It must be called once
/// per process, before the first request.
void PrepareModule();

/// Shuts the module, whatever state it is in, which releases its memory and streams. Then restores its
/// variables to the values of a module that has just been loaded. Does not touch files.
void EndModuleSession();
