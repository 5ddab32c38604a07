// SPDX-License-Identifier: Apache-2.0

// `mqam queue` administers queue managers and queues of the stand-in, for trials on machines without IBM MQ.
#pragma once

namespace CLI {
class App;
}

namespace mqam {

/// Adds the subcommand with its own subcommands. When the user asks for one, it runs while the command line
/// is parsed and leaves its exit code in `exitCode`, which must outlive the parsing.
void AddQueueCommand(CLI::App& app, int& exitCode);

}  // namespace mqam
