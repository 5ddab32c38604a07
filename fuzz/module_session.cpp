// SPDX-License-Identifier: Apache-2.0
#include "fuzz/module_session.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "diag/trace.h"
#include "fuzz/clock.h"
#include "fuzz/harness.h"
#include "fuzz/host.h"
#include "fuzz/mq_script.h"

// The linker defines the bounds of the sections that module_sections.h names.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern std::uint64_t __start_mqamod_bss[];
extern std::uint64_t __stop_mqamod_bss[];
extern std::uint64_t __start_mqamod_data[];
extern std::uint64_t __stop_mqamod_data[];
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

struct Section {
    volatile std::uint64_t* begin;
    std::size_t words;
    std::vector<std::uint64_t> whenLoaded;
};
std::vector<Section> sections;

// The bytes between the variables belong to the sanitizer. They may be copied, but not with memcpy, which the
// sanitizer checks.
__attribute__((no_sanitize("address", "coverage"))) void Remember(volatile std::uint64_t* begin,
                                                                  const volatile std::uint64_t* end) {
    Section section{begin, static_cast<std::size_t>(end - begin), {}};
    for (std::size_t i = 0; i < section.words; ++i)
        section.whenLoaded.push_back(std::uint64_t{section.begin[i]});
    sections.push_back(section);
}

__attribute__((no_sanitize("address", "coverage"))) void Restore(const Section& section) {
    const std::uint64_t* whenLoaded = section.whenLoaded.data();
    for (std::size_t i = 0; i < section.words; ++i) {
        if (section.begin[i] != whenLoaded[i]) section.begin[i] = whenLoaded[i];
    }
}

}  // namespace

void PrepareModule() {
    Remember(__start_mqamod_bss, __stop_mqamod_bss);
    Remember(__start_mqamod_data, __stop_mqamod_data);
    BindMqScript();
    (void)setenv("TZ", "UTC0", 1);
    Require(std::freopen("/dev/null", "w", stdout) != nullptr, "standard output can be redirected");
}

// Calls Init before Shut, because a module that is not initialized refuses Shut, although it may still own an
// error text. After an Init, whatever it returns, it accepts Shut.
void EndModuleSession() {
    PlayCalmQueue(0);
    (void)HostInit("");
    (void)HostShut(0);
    mqamod::UseTraceFile(nullptr);
    for (const Section& section : sections)
        Restore(section);
    ResetClock();
}
