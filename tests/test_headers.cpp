// SPDX-License-Identifier: Apache-2.0

// This program only carries the precompiled headers of the tests; see CMakeLists.txt.
int main() {}
