// Tests of VETRA_CreateLocalPath in a fresh temporary directory (levels, separators, files in
// the way, the length limit, pseudo file systems), and of the walk of levels over recording
// file-system operations.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/local_path.h"
#include "temp_dir.h"
#include "vetra/host.h"

namespace fs = std::filesystem;

namespace {

std::u16string Wide(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

class LocalPath : public testing::Test {
  protected:
    void SetUp() override { std::ofstream(base_ + "/file") << "x"; }
    vetra::test::TempDir dir_;
    const std::string base_ = dir_.Path();
};

TEST_F(LocalPath, CreatesWhatIsMissing) {
    const std::string b = base_;
    const struct {
        std::u16string path;
        int result;
        std::string directory; // must exist afterwards; empty: nothing to check
    } cases[] = {
        {Wide(b + "/a/b/c"), 1, b + "/a/b/c"},
        {Wide(b + "/t1/"), 1, b + "/t1"},
        {u" \t\u3000" + Wide(b + "/trim") + u"\u00A0\n ", 1, b + "/trim"},
        {Wide(b + "/new.txt"), 1, b + "/new.txt"},
        {Wide(b) + u"/\u00E9t\u00E9", 1, b + "/\xC3\xA9t\xC3\xA9"},
        // The walk stops at an empty level: only "x" is made, and "x//y/z" has no parent.
        {Wide(b + "/x//y/z"), 0, b + "/x"},
        {Wide(b + "/x//y"), 1, b + "/x/y"},
        // Something exists already: 1 at once, even for a file.
        {Wide(b), 1, b},
        {Wide(b + "/file"), 1, ""},
        {Wide(b + "/file/"), 0, ""},
        {Wide(b + "/file/sub"), 0, ""},
        {Wide("/"), 1, "/"},
        // Not local directory paths.
        {u"", 0, ""},
        {u" \t ", 0, ""},
        {u"relative/dir", 0, ""},
        {u"/proc/vetra/x", 0, ""},
        {u"/sys/kernel/vetra", 0, ""},
        {Wide(b) + u"/\xD800", 0, ""},
        // 4,095 bytes are accepted, 4,096 are not; "////..." exists.
        {std::u16string(4095, u'/'), 1, ""},
        {std::u16string(4096, u'/'), 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.path.begin(), c.path.end()).substr(0, 80));
        EXPECT_EQ(VETRA_CreateLocalPath(c.path.c_str()), c.result);
        if (!c.directory.empty()) {
            EXPECT_TRUE(fs::is_directory(c.directory));
        }
    }
    EXPECT_EQ(VETRA_CreateLocalPath(nullptr), 0);
    EXPECT_FALSE(fs::exists(b + "/x/y/z"));
    EXPECT_TRUE(fs::is_regular_file(b + "/file"));
}

// Operations that record the directories asked for, find nothing and create nothing.
std::vector<std::string> g_made;
bool g_accept = true;

const vetra::host::PathOperations kRecording = {
    [](const std::string&, vetra::platform::filesys::LocalRoot* root) {
        *root = {0, '/'};
        return g_accept;
    },
    [](const char*) { return false; },
    [](const char* path) { g_made.push_back(path); },
    [](const char*) { return false; },
};

TEST(LocalPathWalk, LevelsFromTheTop) {
    const struct {
        const char16_t* path;
        bool accept;
        std::vector<std::string> made;
    } cases[] = {
        // A first level of one character is walked too.
        {u"/a/bc/d", true, {"/a/", "/a/bc/", "/a/bc/d/", "/a/bc/d/"}},
        {u"/a//b", true, {"/a/", "/a//b/"}},
        {u"/a", false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.path, c.path + std::char_traits<char16_t>::length(c.path)));
        g_made.clear();
        g_accept = c.accept;
        EXPECT_EQ(vetra::host::CreateLocalPath(c.path, kRecording), 0);
        EXPECT_EQ(g_made, c.made);
    }
}

} // namespace
