// Bears the precompiled headers of the tests, see CMakeLists.txt.
int main() {}
