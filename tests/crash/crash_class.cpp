#include "tests/crash/crash_class.h"

const std::vector<CrashClass>& CrashClasses() {
    static const std::vector<CrashClass> classes = {
        {"file",
         "into a file, the command killed",
         TargetKind::kFile,
         false,
         120,
         10,
         Victim::kCommand,
         "",
         0,
         {"own-before", "own-after", "store-before", "store-after"},
         20},
    };
    return classes;
}

const CrashClass* FindCrashClass(const std::string& name) {
    for (const CrashClass& one : CrashClasses()) {
        if (name == one.name) return &one;
    }
    return nullptr;
}
