// file_fixture.h - what the tests that touch files share: a scratch folder removed with all
// it holds, whole files written and read back, and putting the system's file operations
// back after a test that made one of them fail.
#ifndef VETRA_TESTS_FILE_FIXTURE_H
#define VETRA_TESTS_FILE_FIXTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "platform/file.h"

namespace vetra::test {

// Paths here are UTF-8, also where the system's narrow names are not (Windows).
inline std::string ReadWholeFile(const std::string& path) {
    std::ifstream in(std::filesystem::u8path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class ScratchFolder {
  public:
    ScratchFolder() {
        std::random_device random;
        for (int attempt = 0; attempt < 100 && root_.empty(); ++attempt) {
            const std::string path = testing::TempDir() + "vetra-files-" + std::to_string(random());
            std::error_code error;
            if (std::filesystem::create_directory(path, error)) root_ = path;
        }
        if (root_.empty()) ADD_FAILURE() << "no scratch folder";
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Root() const { return root_; }
    std::string Path(const std::string& name) const { return root_ + "/" + name; }
    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(std::filesystem::u8path(Path(name)), std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Read(const std::string& name) const { return ReadWholeFile(Path(name)); }
    /// The names in the folder, sorted: a failed save must leave no temporary file.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(root_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

  private:
    std::string root_;
};

/// Puts the system's file operations back at the end of a test that replaced some.
struct FileOpsRestorer {
    ~FileOpsRestorer() { platform::ActiveFileOps() = platform::SystemFileOps(); }
};

} // namespace vetra::test

#endif // VETRA_TESTS_FILE_FIXTURE_H
