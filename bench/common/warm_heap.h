// warm_heap.h - keeps freed memory in the process, so that runs after the
// first measure the libraries' own work rather than the kernel's page faults.
//
// On a virtual machine a first touch of fresh memory can cost more than the
// parse itself; every library gets the same treatment.
#ifndef BENCH_WARM_HEAP_H
#define BENCH_WARM_HEAP_H

namespace bench {

/// Makes malloc serve every block from its heap (no per-block mmap) and never
/// give the top of the heap back. Call first thing in main.
void KeepFreedMemory();

} // namespace bench

#endif // BENCH_WARM_HEAP_H
