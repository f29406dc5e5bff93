// Tests of the PE version reader on images made byte by byte: both header forms and both
// places of the version type, every way of breaking the road to the fixed information,
// every truncation, hostile resource trees, and VETRA_GetFileVersion on real files.
#include <gtest/gtest.h>

#include <string>

#include "host/pe_version.h"
#include "pe_image.h"
#include "support/vt_text.h"
#include "text/file_fixture.h"
#include "vetra/host.h"

using vetra::host::FileVersion;
using vetra::host::ParsePeVersion;
using vetra::test::MakePeImage;
using vetra::test::PeImage;
using vetra::test::PeImageOptions;
using vetra::test::Put32;

namespace {

bool Parse(const std::vector<uint8_t>& bytes, FileVersion* version) {
    return ParsePeVersion(bytes.data(), bytes.size(), version);
}

// Both header forms, with the version type first or last among the types: the whole image
// gives its version, and every image cut short gives nothing.
TEST(PeVersion, EveryLayoutAndEveryTruncation) {
    for (bool pe64 : {false, true}) {
        for (bool versionFirst : {false, true}) {
            SCOPED_TRACE(testing::Message() << "pe64 " << pe64 << " first " << versionFirst);
            PeImageOptions options;
            options.pe64 = pe64;
            options.versionFirst = versionFirst;
            options.versionMS = 0x000A0014;
            options.versionLS = 0xFFFF0001;
            const std::vector<uint8_t> bytes = MakePeImage(options).bytes;
            FileVersion version = {0, 0};
            ASSERT_TRUE(Parse(bytes, &version));
            EXPECT_EQ(version.ms, 0x000A0014u);
            EXPECT_EQ(version.ls, 0xFFFF0001u);
            for (size_t size = 0; size < bytes.size(); ++size) {
                // A copy of its own, so that ASan sees any read past the cut.
                const std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + size);
                ASSERT_FALSE(Parse(cut, &version)) << "cut at " << size;
            }
        }
    }
}

// Each case writes one 32-bit value into a sound image; the neighbours it overwrites are
// fields that the reader does not use.
TEST(PeVersion, BrokenRoadsAndHostileTrees) {
    const PeImage base = MakePeImage({});
    const size_t opt = base.optionalHeader, sections = base.sectionTable;
    const size_t block = base.versionBlock, entry = base.versionTypeEntry;
    const struct {
        const char* what;
        size_t offset;
        uint32_t value;
    } cases[] = {
        {"DOS signature", 0, 'M' | 'X' << 8},
        {"PE header beyond the file", 0x3C, 0xFFFFFFF0},
        {"PE signature", 0x80, 0x0000454E},
        {"optional header magic", opt, 0x107},
        {"optional header too short for the resource directory", 0x80 + 20, 100},
        {"two data directories only", opt + 92, 2},
        {"no resource directory", opt + 96 + 16, 0},
        {"resources outside every section", opt + 96 + 16, 0x9000},
        {"section table beyond the file", 0x80 + 6, 0xFFFF},
        {"resource section's raw data beyond the file", sections + 40 + 20, 0x10000},
        {"version type is a name", entry, 0x80000010},
        {"version type leads to data", entry + 4, 0x40},
        {"version block length", block, 91 | 52 << 16},
        {"version value length", block + 2, 51},
        {"version key", block + 6, 'W'},
        {"fixed information signature", block + 40, 0xFEEF04BE},
        // The version type's subdirectory is the root again, and so on at every level.
        {"type loops to the root", entry + 4, 0x80000000},
        {"subdirectory offset wraps around", entry + 4, 0xFFFFFFFF},
        // 65535 named and 65535 id entries, most of them beyond the section.
        {"root claims 131070 entries", base.resourceRoot + 12, 0xFFFFFFFF},
    };
    FileVersion version = {0, 0};
    ASSERT_TRUE(Parse(base.bytes, &version));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<uint8_t> bytes = base.bytes;
        Put32(bytes, c.offset, c.value);
        EXPECT_FALSE(Parse(bytes, &version));
    }
}

TEST(PeVersion, GetFileVersion) {
    const vetra::test::ScratchFolder folder;
    const vtstring dir(folder.Root().begin(), folder.Root().end());
    const vtstring path = dir + VT("/lib\u00E9.dll");
    const auto write = [&](const PeImageOptions& options) {
        const std::vector<uint8_t> bytes = MakePeImage(options).bytes;
        folder.Write("lib\xC3\xA9.dll", std::string(bytes.begin(), bytes.end()));
    };
    vtdword ms = 7, ls = 7;
    EXPECT_EQ(VETRA_GetFileVersion(path.c_str(), &ms, &ls), 0) << "missing file";
    write({});
    EXPECT_EQ(VETRA_GetFileVersion(path.c_str(), &ms, &ls), 1);
    EXPECT_EQ(ms, 0x00010002u);
    EXPECT_EQ(ls, 0x00030004u);
    EXPECT_EQ(VETRA_GetFileVersion(path.c_str(), nullptr, nullptr), 1);

    PeImageOptions options;
    options.withVersion = false;
    write(options);
    ms = ls = 7;
    const vtchar loneSurrogate[] = {VT('/'), 0xD800, 0};
    for (const vtchar* file : {path.c_str(), static_cast<const vtchar*>(nullptr), VT(""),
                               dir.c_str(), loneSurrogate, VT("/dev/null")}) {
        EXPECT_EQ(VETRA_GetFileVersion(file, &ms, &ls), 0);
    }
    EXPECT_EQ(ms, 7u);
    EXPECT_EQ(ls, 7u);
}

} // namespace
