// Fuzz target: any bytes, read as a file, go through the PE version reader. No input may
// crash it, make it read outside the bytes or run without end, and when it finds no version
// it must leave the caller's output as it was.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "host/pe_version.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A buffer of exactly the input's size, so that AddressSanitizer sees any read past it.
    const std::vector<uint8_t> bytes(data, data + size);
    vetra::host::FileVersion version = {0xA5A5A5A5, 0x5A5A5A5A};
    if (!vetra::host::ParsePeVersion(bytes.data(), bytes.size(), &version) &&
        (version.ms != 0xA5A5A5A5 || version.ls != 0x5A5A5A5A)) {
        std::fprintf(stderr, "broken: the output was written without a version\n");
        std::abort();
    }
    return 0;
}
