// pe_image.cpp - builds the test images: headers at fixed places, the code section at 0x200
// and the resource section at 0x400, laid out as root directory, then per type its name and
// language directories and data entry, then a name string, then the data; the version block
// comes last, so that cutting the image anywhere loses it.
#include "pe_image.h"

#include <cstring>

namespace vetra::test {
namespace {

constexpr uint32_t kResourceRva = 0x2000;
constexpr size_t kResourceOffset = 0x400;
constexpr uint32_t kSubdirectory = 0x80000000;

struct Type {
    uint32_t id; // kSubdirectory set: a named type
    std::vector<uint8_t> data;
};

std::vector<uint8_t> VersionBlock(uint32_t ms, uint32_t ls) {
    std::vector<uint8_t> v(92, 0);
    Put16(v, 0, 92); // wLength: the fixed information alone, no children
    Put16(v, 2, 52); // wValueLength
    const char key[] = "VS_VERSION_INFO";
    for (size_t i = 0; i < sizeof key; ++i)
        Put16(v, 6 + 2 * i, key[i]);
    const uint32_t fixed[] = {0xFEEF04BD, 0x00010000, ms, ls, 0x00090009, 0x00090009, 0x3F};
    for (size_t i = 0; i < std::size(fixed); ++i)
        Put32(v, 40 + 4 * i, fixed[i]);
    return v;
}

} // namespace

void Put16(std::vector<uint8_t>& bytes, size_t offset, uint16_t value) {
    if (bytes.size() < offset + 2) bytes.resize(offset + 2);
    bytes[offset] = static_cast<uint8_t>(value);
    bytes[offset + 1] = static_cast<uint8_t>(value >> 8);
}

void Put32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) {
    Put16(bytes, offset, static_cast<uint16_t>(value));
    Put16(bytes, offset + 2, static_cast<uint16_t>(value >> 16));
}

PeImage MakePeImage(const PeImageOptions& o) {
    std::vector<Type> types = {{kSubdirectory, {'a', 'b', 'c'}}, {3, std::vector<uint8_t>(16, 7)}};
    if (o.withVersion) {
        const Type version = {16, VersionBlock(o.versionMS, o.versionLS)};
        types.insert(o.versionFirst ? types.begin() : types.end(), version);
    }
    const size_t n = types.size();

    // The resource section, with offsets relative to its start. The data goes behind the
    // directories and the name string, the version's last of all.
    std::vector<uint8_t> r;
    const size_t perType = 24 + 24 + 16; // name directory, language directory, data entry
    const size_t nameString = 16 + 8 * n + perType * n;
    Put16(r, nameString, 4);
    for (size_t i = 0; i < 4; ++i)
        Put16(r, nameString + 2 + 2 * i, "DATA"[i]);
    std::vector<size_t> dataAt(n);
    for (int versionPass = 0; versionPass < 2; ++versionPass) {
        for (size_t i = 0; i < n; ++i) {
            if ((types[i].id == 16) != (versionPass == 1)) continue;
            dataAt[i] = (r.size() + 3) & ~size_t{3};
            r.resize(dataAt[i]);
            r.insert(r.end(), types[i].data.begin(), types[i].data.end());
        }
    }

    PeImage image;
    Put16(r, 12, 1);                            // named entries
    Put16(r, 14, static_cast<uint16_t>(n - 1)); // id entries
    for (size_t i = 0; i < n; ++i) {
        const size_t entry = 16 + 8 * i;
        const size_t names = 16 + 8 * n + perType * i, languages = names + 24;
        const size_t dataEntry = languages + 24;
        const uint32_t id = types[i].id == kSubdirectory
                                ? kSubdirectory | static_cast<uint32_t>(nameString)
                                : types[i].id;
        Put32(r, entry, id);
        Put32(r, entry + 4, kSubdirectory | static_cast<uint32_t>(names));
        Put16(r, names + 14, 1); // one name: id 1
        Put32(r, names + 16, 1);
        Put32(r, names + 20, kSubdirectory | static_cast<uint32_t>(languages));
        Put16(r, languages + 14, 1); // one language: 0x409
        Put32(r, languages + 16, 0x409);
        Put32(r, languages + 20, static_cast<uint32_t>(dataEntry));
        Put32(r, dataEntry, kResourceRva + static_cast<uint32_t>(dataAt[i]));
        Put32(r, dataEntry + 4, static_cast<uint32_t>(types[i].data.size()));
        if (types[i].id == 16) {
            image.versionTypeEntry = kResourceOffset + entry;
            image.versionBlock = kResourceOffset + dataAt[i];
        }
    }

    std::vector<uint8_t>& b = image.bytes;
    b.assign(kResourceOffset, 0);
    b[0] = 'M';
    b[1] = 'Z';
    const size_t pe = 0x80;
    Put32(b, 0x3C, pe);
    std::memcpy(&b[pe], "PE\0\0", 4);
    const uint16_t optionalSize = o.pe64 ? 240 : 224;
    Put16(b, pe + 4, o.pe64 ? 0x8664 : 0x14C); // machine
    Put16(b, pe + 6, 2);                       // sections
    Put16(b, pe + 20, optionalSize);
    Put16(b, pe + 22, 0x2102); // a DLL
    image.optionalHeader = pe + 24;
    Put16(b, image.optionalHeader, o.pe64 ? 0x20B : 0x10B);
    const size_t directories = image.optionalHeader + (o.pe64 ? 112 : 96);
    Put32(b, directories - 4, 16);
    Put32(b, directories + 16, kResourceRva);
    Put32(b, directories + 20, static_cast<uint32_t>(r.size()));
    image.sectionTable = image.optionalHeader + optionalSize;
    const struct {
        const char* name;
        uint32_t address, size, offset;
    } sections[] = {{".text", 0x1000, 0x200, 0x200},
                    {".rsrc", kResourceRva, static_cast<uint32_t>(r.size()), kResourceOffset}};
    for (size_t i = 0; i < 2; ++i) {
        const size_t s = image.sectionTable + 40 * i;
        std::memcpy(&b[s], sections[i].name, 5);
        Put32(b, s + 8, sections[i].size);
        Put32(b, s + 12, sections[i].address);
        Put32(b, s + 16, sections[i].size);
        Put32(b, s + 20, sections[i].offset);
    }
    image.resourceRoot = kResourceOffset;
    b.insert(b.end(), r.begin(), r.end());
    return image;
}

} // namespace vetra::test
