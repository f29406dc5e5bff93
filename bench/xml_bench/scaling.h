// scaling.h - how the cost of one edit depends on where it lands and on the
// size of the document, for vetra and for pugixml as the yardstick.
//
// Edits land near the start, the middle and the end of the corpus; appends
// are timed at several document sizes and must cost the same at each.
#ifndef BENCH_SCALING_H
#define BENCH_SCALING_H

#include <string>
#include <vector>

#include "peer.h"

namespace bench {

/// One row of the scaling work: seconds per operation, one figure per run.
struct OpSample {
    std::string work;
    bool onCorpus; // false: on a document built from nothing
    std::vector<double> seconds;
};

/// Document sizes, in elements, at which appends are timed.
inline const std::vector<long>& AppendSizes() {
    static const std::vector<long> sizes{1000, 10000, 100000, 1000000};
    return sizes;
}

/// Appends timed in one batch; they are removed again, untimed, after it.
constexpr int kAppendBatch = 1024;

/// "append-1k", "append-10k", ... for the sizes above.
inline std::string AppendWork(long elements) {
    return elements >= 1000000 ? "append-" + std::to_string(elements / 1000000) + "M"
                               : "append-" + std::to_string(elements / 1000) + "k";
}

/// Edits (an attribute value flipping between two lengths) on the first,
/// middle and last item of the corpus, then appends at growing sizes.
std::vector<OpSample> ScaleVetra(Input& in, int runs);
std::vector<OpSample> ScalePugixml(Input& in, int runs);

} // namespace bench

#endif // BENCH_SCALING_H
