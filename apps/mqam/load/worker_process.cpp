#include "mqam/load/worker_process.h"

#include <algorithm>

namespace mqam {

std::vector<std::string> ComposeWorkerArguments(const std::vector<std::string>& ofCommand,
                                                const std::vector<std::string>& more) {
    constexpr std::size_t kProgramAndSubcommand = 2;
    std::vector<std::string> all = ofCommand;
    const auto place = static_cast<std::ptrdiff_t>(std::min(kProgramAndSubcommand, all.size()));
    all.insert(all.begin() + place, more.begin(), more.end());
    return all;
}

}  // namespace mqam
