// Runs a fuzz target's entry point over every file in the directories given
// on the command line (missing directories are skipped). A broken
// invariant aborts, which fails the test.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) continue;
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[i])) {
            if (!entry.is_regular_file()) continue;
            std::ifstream in(entry.path(), std::ios::binary);
            std::vector<uint8_t> data((std::istreambuf_iterator<char>(in)),
                                      std::istreambuf_iterator<char>());
            LLVMFuzzerTestOneInput(data.data(), data.size());
            ++files;
        }
    }
    std::printf("replayed %d inputs\n", files);
    return files > 0 ? 0 : 1;
}
