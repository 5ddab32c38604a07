// SPDX-License-Identifier: Apache-2.0

// Writes past the end of a local array, which the stack protector has to notice before the function returns.
#include <cstdio>
#include <cstdlib>

namespace {

[[gnu::noinline]] int FillArray(int bytes) {
    char array[16];
    volatile char* place = array;
    for (int i = 0; i < bytes; ++i) {
        place[i] = 'x';
    }
    return place[0];
}

}  // namespace

int main(int argc, char** argv) {
    const int bytes = argc > 1 ? std::atoi(argv[1]) : 0;
    const int first = FillArray(bytes);
    (void)std::printf("returned after %d bytes: %d\n", bytes, first);
    return 0;
}
