// char_sets.cpp - the character class table and CompareNames.
#include "xml/char_sets.h"

namespace vetra::xml {

namespace {

constexpr AsciiTable<CharClassOf> kTable;

} // namespace

const uint8_t kCharClass[128] = {
#define R(i)                                                                                       \
    kTable.v[i], kTable.v[i + 1], kTable.v[i + 2], kTable.v[i + 3], kTable.v[i + 4],               \
        kTable.v[i + 5], kTable.v[i + 6], kTable.v[i + 7]
    R(0),  R(8),  R(16), R(24), R(32),  R(40),  R(48), R(56), R(64),
    R(72), R(80), R(88), R(96), R(104), R(112), R(120)
#undef R
};

int32_t CompareNamesFolding(const wchar* a, const wchar* b, int32_t count) {
    bool sawNonAscii = false;
    for (int32_t i = 0; i < count; ++i) {
        wchar ca = a[i], cb = b[i];
        if (ca == cb) {
            if (ca > 127) sawNonAscii = true;
            continue;
        }
        if (sawNonAscii) return int32_t(ca) - int32_t(cb);
        if (ca >= 'a' && ca <= 'z') ca = wchar(ca - 32);
        if (cb >= 'a' && cb <= 'z') cb = wchar(cb - 32);
        if (ca != cb) return int32_t(ca) - int32_t(cb);
    }
    return 0;
}

} // namespace vetra::xml
