// A plug-in that writes to standard output and standard error in every way a plug-in might (the
// C library with and without a line end, C++ streams, the descriptors themselves), at initialise,
// on every idle call and in its one function, Noisy_Print. The shell's tests load it to check
// that none of it reaches fmsim's results.
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "host/fmx.h"

namespace {

void makeNoise(const char* when) {
    std::printf("noise:printf:%s", when);  // no line end: stays in the C library's buffer
    std::fprintf(stderr, "noise:stderr:%s\n", when);
    std::cout << "noise:cout:" << when << '\n';
    constexpr char kRaw[] = "noise:write\n";
    (void)!::write(STDOUT_FILENO, kRaw, sizeof kRaw - 1);
    (void)!::write(STDERR_FILENO, kRaw, sizeof kRaw - 1);
}

fmx::errcode print(short, const fmx::ExprEnv&, const fmx::DataVect&, fmx::Data&) {
    makeNoise("function");
    return 0;
}

constexpr short kStarted = 57;

}  // namespace

extern "C" __attribute__((visibility("default"))) void FMExternCallProc(FMX_ExternCallPtr pb) {
    switch (pb->whichCall) {
        case kFMXT_Init: {
            makeNoise("init");
            fmx::QuadCharUniquePtr id('N', 'o', 'i', 's');
            fmx::TextUniquePtr name("Noisy_Print");
            fmx::TextUniquePtr prototype("Noisy_Print");
            fmx::ExprEnv::RegisterExternalFunction(*id, 1, *name, *prototype, 0, 0, 0xFFFFFFFF,
                                                   print);
            pb->result = kStarted;
            break;
        }
        case kFMXT_Idle:
            makeNoise("idle");
            break;
        default:
            break;
    }
}
