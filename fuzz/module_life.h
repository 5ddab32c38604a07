// Lives of the module. Its state is process-wide and some of it survives even Shut, so that one process would
// let each input see what earlier inputs left. Here every input begins with the module as when it is loaded:
// its variables are put back to what they were before the first request.
#pragma once

/// Remembers the module's variables, binds the MQ double, sends standard output to nowhere. Once a process,
/// before the first request.
void PrepareModule();

/// Ends the life of the module as a host does that shuts it, whatever state it is in, and makes a new one:
/// memory and streams are given back, the variables are those of a module that has just been loaded. Files
/// stay.
void EndModuleLife();
