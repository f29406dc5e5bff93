// pe_version.cpp - the version resource of a PE image, and the exported version queries,
// which ask the system's own version service where it has one (Windows) and read the image
// here otherwise.
//
// The road: DOS header -> "PE\0\0" and the COFF header -> optional header (PE32 or PE32+)
// -> resource data directory -> section table, which maps addresses in the image (RVAs) to
// file offsets -> resource tree of three levels (type, name, language) -> data entry ->
// VS_VERSIONINFO block -> VS_FIXEDFILEINFO. Every structure is copied out of the source and
// decoded as little-endian; nothing points into the image.
//
// Bounds: a count in a header never sizes a buffer beyond the image. The tree is walked
// exactly three levels deep, so a directory that names itself is read again at most at the
// next level, and every directory and directory entry read counts against one budget for
// the whole call.
#include "host/pe_version.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/utf8_path.h"
#include "platform/file.h"
#include "platform/version_info.h"
#include "vetra/host.h"

namespace vetra::host {
namespace {

constexpr uint32_t kVersionType = 16;            // RT_VERSION
constexpr uint32_t kHighBit = 0x80000000;        // a name string, or a subdirectory
constexpr uint32_t kFixedSignature = 0xFEEF04BD; // VS_FIXEDFILEINFO.dwSignature
constexpr size_t kEntryBudget = 1 << 18;         // directory entries read in one call

// The VS_VERSIONINFO block up to the end of its fixed information: wLength, wValueLength,
// wType, the key "VS_VERSION_INFO" with its null, padding to 32 bits, then the value.
constexpr size_t kKeyOffset = 6;
constexpr size_t kValueOffset = 40;
constexpr size_t kFixedInfoSize = 52;
constexpr size_t kVersionHead = kValueOffset + kFixedInfoSize;
constexpr char16_t kVersionKey[] = u"VS_VERSION_INFO";

uint16_t U16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | p[1] << 8);
}
uint32_t U32(const uint8_t* p) {
    return U16(p) | static_cast<uint32_t>(U16(p + 2)) << 16;
}

struct Section {
    uint32_t address; // VirtualAddress
    uint32_t rawSize; // SizeOfRawData
    uint32_t rawPointer;
};

struct DirectoryEntry {
    uint32_t name;   // an id, or kHighBit plus the offset of a name string
    uint32_t target; // kHighBit plus a subdirectory's offset, or a data entry's offset
};

class ImageReader {
  public:
    explicit ImageReader(const ByteSource& source) : source_(source) {}

    // Whether `length` bytes at `offset` lie in the image; asked before a buffer is made for
    // them, so that a count in a header cannot make one larger than the image.
    bool Holds(uint64_t offset, uint64_t length) const {
        return offset <= source_.size && length <= source_.size - offset;
    }

    bool Read(uint64_t offset, void* out, size_t length) const {
        return Holds(offset, length) && source_.read(source_.context, offset, out, length);
    }

    // Reads the headers up to the section table; true if the image has a resource tree.
    bool ReadHeaders();

    // The file offset of `length` bytes at `rva`, which must lie in the raw data of the
    // section that starts last at or before `rva` (sections of a sound image never overlap).
    bool Map(uint64_t rva, size_t length, uint64_t* offset) const {
        auto after = std::upper_bound(sections_.begin(), sections_.end(), rva,
                                      [](uint64_t a, const Section& s) { return a < s.address; });
        if (after == sections_.begin()) return false;
        const Section& s = *--after;
        const uint64_t within = rva - s.address;
        if (within >= s.rawSize || length > s.rawSize - within) return false;
        *offset = s.rawPointer + within;
        return true;
    }

    bool ReadAtRva(uint64_t rva, void* out, size_t length) const {
        uint64_t offset = 0;
        return Map(rva, length, &offset) && Read(offset, out, length);
    }

    // The entries of the resource directory at `offset` from the tree's root.
    bool ReadDirectory(uint32_t offset, std::vector<DirectoryEntry>& entries);

    bool FindVersion(FileVersion* version);

  private:
    bool ReadFixedInfo(uint32_t dataEntryOffset, FileVersion* version) const;

    const ByteSource& source_;
    std::vector<Section> sections_;
    uint32_t resourceRoot_ = 0; // the RVA of the root directory
    size_t budget_ = kEntryBudget;
};

bool ImageReader::ReadHeaders() {
    uint8_t dos[64];
    if (!Read(0, dos, sizeof dos) || dos[0] != 'M' || dos[1] != 'Z') return false;
    const uint64_t peOffset = U32(dos + 0x3C);

    uint8_t coff[24]; // signature and COFF file header
    if (!Read(peOffset, coff, sizeof coff) || std::memcmp(coff, "PE\0\0", 4) != 0) return false;
    const uint16_t sectionCount = U16(coff + 6);
    const uint16_t optionalSize = U16(coff + 20);

    const uint64_t optionalOffset = peOffset + sizeof coff;
    const uint64_t tableOffset = optionalOffset + optionalSize;
    if (optionalSize < 2 || !Holds(optionalOffset, optionalSize + uint64_t{40} * sectionCount)) {
        return false;
    }
    std::vector<uint8_t> optional(optionalSize);
    if (!Read(optionalOffset, optional.data(), optionalSize)) return false;
    size_t directories; // where the data directories start, behind NumberOfRvaAndSizes
    switch (U16(optional.data())) {
    case 0x10B:
        directories = 96;
        break; // PE32
    case 0x20B:
        directories = 112;
        break; // PE32+
    default:
        return false;
    }
    const size_t resourceDirectory = directories + 2 * 8;
    if (optionalSize < resourceDirectory + 8 || U32(&optional[directories - 4]) < 3) return false;
    resourceRoot_ = U32(&optional[resourceDirectory]);
    if (resourceRoot_ == 0) return false;

    std::vector<uint8_t> table(size_t{40} * sectionCount);
    if (!Read(tableOffset, table.data(), table.size())) return false;
    sections_.resize(sectionCount);
    for (size_t i = 0; i < sectionCount; ++i) {
        const uint8_t* header = &table[i * 40];
        sections_[i] = {U32(header + 12), U32(header + 16), U32(header + 20)};
    }
    std::sort(sections_.begin(), sections_.end(),
              [](const Section& a, const Section& b) { return a.address < b.address; });
    return true;
}

bool ImageReader::ReadDirectory(uint32_t offset, std::vector<DirectoryEntry>& entries) {
    uint8_t head[16];
    const uint64_t rva = uint64_t{resourceRoot_} + offset;
    if (!ReadAtRva(rva, head, sizeof head)) return false;
    // The directory itself counts too, so that empty ones cannot be read without end.
    const size_t count = size_t{U16(head + 12)} + U16(head + 14);
    uint64_t at = 0;
    if (count + 1 > budget_ || !Map(rva + sizeof head, count * 8, &at) || !Holds(at, count * 8)) {
        return false;
    }
    budget_ -= count + 1;
    std::vector<uint8_t> raw(count * 8);
    if (!Read(at, raw.data(), raw.size())) return false;
    entries.resize(count);
    for (size_t i = 0; i < count; ++i)
        entries[i] = {U32(&raw[i * 8]), U32(&raw[i * 8 + 4])};
    return true;
}

bool ImageReader::ReadFixedInfo(uint32_t dataEntryOffset, FileVersion* version) const {
    uint8_t entry[16]; // OffsetToData (an RVA), Size, CodePage, Reserved
    if (!ReadAtRva(uint64_t{resourceRoot_} + dataEntryOffset, entry, sizeof entry)) return false;
    uint8_t block[kVersionHead];
    if (U32(entry + 4) < kVersionHead || !ReadAtRva(U32(entry), block, sizeof block)) {
        return false;
    }
    if (U16(block) < kVersionHead || U16(block + 2) < kFixedInfoSize) return false;
    for (size_t i = 0; i < std::size(kVersionKey); ++i) {
        if (U16(block + kKeyOffset + 2 * i) != kVersionKey[i]) return false;
    }
    const uint8_t* fixed = block + kValueOffset;
    if (U32(fixed) != kFixedSignature) return false;
    *version = {U32(fixed + 8), U32(fixed + 12)};
    return true;
}

bool ImageReader::FindVersion(FileVersion* version) {
    std::vector<DirectoryEntry> types, names, languages;
    if (!ReadDirectory(0, types)) return false;
    for (const DirectoryEntry& type : types) {
        if (type.name != kVersionType || !(type.target & kHighBit)) continue;
        if (!ReadDirectory(type.target & ~kHighBit, names)) continue;
        for (const DirectoryEntry& name : names) {
            if (!(name.target & kHighBit)) continue;
            if (!ReadDirectory(name.target & ~kHighBit, languages)) continue;
            for (const DirectoryEntry& language : languages) {
                if (!(language.target & kHighBit) && ReadFixedInfo(language.target, version)) {
                    return true;
                }
            }
        }
    }
    return false;
}

// The context is the first byte; the reader has checked the bounds against the size.
bool ReadSpan(const void* context, uint64_t offset, void* out, size_t length) {
    if (length > 0) std::memcpy(out, static_cast<const uint8_t*>(context) + offset, length);
    return true;
}

// An image read from a file through the platform's file layer, closed by the destructor.
class ImageFile {
  public:
    ImageFile() = default;
    ImageFile(const ImageFile&) = delete;
    ImageFile& operator=(const ImageFile&) = delete;
    ~ImageFile() { platform::ActiveFileOps().close(handle_); }

    // Anything but a regular file has the length 0, which holds no image.
    bool Open(const char* path) {
        return platform::ActiveFileOps().openForReading(path, handle_, length_) == 0;
    }

    ByteSource Source() const { return {this, static_cast<uint64_t>(length_), Read}; }

  private:
    static bool Read(const void* context, uint64_t offset, void* out, size_t length) {
        const ImageFile& file = *static_cast<const ImageFile*>(context);
        return platform::ActiveFileOps().readAt(file.handle_, static_cast<int64_t>(offset), out,
                                                length) == 0;
    }

    platform::FileHandle handle_;
    int64_t length_ = 0;
};

} // namespace

bool ReadPeVersion(const ByteSource& source, FileVersion* version) {
    ImageReader reader(source);
    return reader.ReadHeaders() && reader.FindVersion(version);
}

bool ParsePeVersion(const uint8_t* data, size_t size, FileVersion* version) {
    return ReadPeVersion({data, size, ReadSpan}, version);
}

} // namespace vetra::host

extern "C" int VETRA_GetFileVersion(const vtchar* file, vtdword* versionMS, vtdword* versionLS) {
    if (file == nullptr) return 0;
    const auto* path = reinterpret_cast<const char16_t*>(file);
    vetra::host::FileVersion version{};
    switch (vetra::platform::SystemFileVersion(path, &version.ms, &version.ls)) {
    case vetra::platform::VersionQuery::found:
        break;
    case vetra::platform::VersionQuery::none:
        return 0;
    case vetra::platform::VersionQuery::noService: {
        std::string utf8;
        vetra::host::ImageFile image;
        if (!vetra::host::PathToUtf8(path, std::char_traits<char16_t>::length(path), utf8) ||
            !image.Open(utf8.c_str()) || !vetra::host::ReadPeVersion(image.Source(), &version)) {
            return 0;
        }
        break;
    }
    }
    if (versionMS != nullptr) *versionMS = version.ms;
    if (versionLS != nullptr) *versionLS = version.ls;
    return 1;
}

extern "C" int VETRA_GetBrowserVersion(vtdword* major, vtdword* minor) {
    uint32_t majorVersion = 0;
    uint32_t minorVersion = 0;
    const bool found = vetra::platform::BrowserVersion(&majorVersion, &minorVersion);
    if (major != nullptr) *major = majorVersion;
    if (minor != nullptr) *minor = minorVersion;
    return found ? 1 : 0;
}
