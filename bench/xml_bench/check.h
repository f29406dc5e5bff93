// check.h - the self-check of xml_bench: every library must read a table of
// small documents with the counts worked out by hand.
//
// A benchmark whose libraries see different documents compares nothing; this
// catches a walk that skips text, misreads references or drops attributes.
#ifndef BENCH_CHECK_H
#define BENCH_CHECK_H

namespace bench {

/// Runs every peer's parse and walk over the table; prints each mismatch.
/// Returns 0 when all agree with the table, 1 otherwise.
int RunCheck();

} // namespace bench

#endif // BENCH_CHECK_H
