// SPDX-License-Identifier: Apache-2.0

// This header is included before every source of the module when it is built for fuzzing. It collects the
// module's variables in two sections of their own, so that module_session.cpp finds them all.
#pragma clang section bss = "mqamod_bss" data = "mqamod_data"
