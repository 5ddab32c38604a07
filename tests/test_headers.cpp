// SPDX-License-Identifier: Apache-2.0

// Bears the precompiled headers of the tests, see CMakeLists.txt.
int main() {}
