// temp_dir.h - a fresh directory under /tmp for one test, removed with all it holds.
#ifndef VETRA_TESTS_HOST_TEMP_DIR_H
#define VETRA_TESTS_HOST_TEMP_DIR_H

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vetra::test {

class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/vetra_host_XXXXXX";
        if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp");
        path_ = pattern;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

} // namespace vetra::test

#endif // VETRA_TESTS_HOST_TEMP_DIR_H
