// pe_image.h - small PE images made byte by byte for the version reader's tests and seeds:
// a DOS header, PE32 or PE32+ headers, a code section and a resource section whose tree
// holds a named type, an icon and, optionally, a version resource.
#ifndef VETRA_TESTS_HOST_PE_IMAGE_H
#define VETRA_TESTS_HOST_PE_IMAGE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vetra::test {

struct PeImageOptions {
    bool pe64 = false;
    bool withVersion = true;
    bool versionFirst = false; // list the version type before the others in the root directory
    uint32_t versionMS = 0x00010002;
    uint32_t versionLS = 0x00030004;
};

struct PeImage {
    std::vector<uint8_t> bytes;
    size_t optionalHeader = 0; // file offsets of the parts that tests break
    size_t sectionTable = 0;
    size_t resourceRoot = 0;
    size_t versionTypeEntry = 0; // the version type's entry in the root directory
    size_t versionBlock = 0;     // VS_VERSIONINFO, the last bytes of the image
};

PeImage MakePeImage(const PeImageOptions& options);

void Put16(std::vector<uint8_t>& bytes, size_t offset, uint16_t value);
void Put32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value);

} // namespace vetra::test

#endif // VETRA_TESTS_HOST_PE_IMAGE_H
