// pe_version.h - the file version held in the version resource of a PE image (32- or 64-bit),
// read from the image's bytes without loading it.
//
// The reader asks its source for each structure at the offset the headers name; any offset
// or size that leads outside the bytes makes the answer "no version", never a read out of
// bounds. The work is bounded for any input, including resource trees that point back into
// themselves.
#ifndef VETRA_HOST_PE_VERSION_H
#define VETRA_HOST_PE_VERSION_H

#include <cstddef>
#include <cstdint>

namespace vetra::host {

/// Where the image's bytes come from: `size` of them, of which `read` copies exactly `length`
/// at `offset` into `out`, or answers false if they are not all there.
struct ByteSource {
    const void* context;
    uint64_t size;
    bool (*read)(const void* context, uint64_t offset, void* out, size_t length);
};

/// dwFileVersionMS and dwFileVersionLS of the fixed file information.
struct FileVersion {
    uint32_t ms;
    uint32_t ls;
};

/// Finds the first version resource (type 16, any name, any language, in the order the
/// resource directories list them) whose block holds a fixed file information, and stores its
/// file version in `*version`. False, with `*version` untouched, if there is none.
bool ReadPeVersion(const ByteSource& source, FileVersion* version);

/// ReadPeVersion over the `size` bytes at `data`.
bool ParsePeVersion(const uint8_t* data, size_t size, FileVersion* version);

} // namespace vetra::host

#endif // VETRA_HOST_PE_VERSION_H
