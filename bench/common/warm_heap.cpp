// warm_heap.cpp - glibc's malloc tuned to keep what it was given: no mmap for
// large blocks (those would be unmapped on free and faulted in anew) and no
// trimming of the heap.
//
// Peak resident sizes stay the same; only repeated runs get warm memory.
#include "warm_heap.h"

#include <climits>
#include <malloc.h>

namespace bench {

void KeepFreedMemory() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

} // namespace bench
