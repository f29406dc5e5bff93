// Tests of VETRA_CreateLocalPath in a scratch folder (levels, separators, files in the way,
// the length limit, pseudo file systems), and of the walk's first level over recording
// operations.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/local_path.h"
#include "text/file_fixture.h"
#include "vetra/host.h"

namespace fs = std::filesystem;

namespace {

std::u16string Wide(const std::string& ascii) {
    return std::u16string(ascii.begin(), ascii.end());
}

TEST(LocalPath, CreatesWhatIsMissing) {
    const vetra::test::ScratchFolder folder;
    folder.Write("file", "x");
    const std::string b = folder.Root();
    const struct {
        std::u16string path;
        int result;
        std::string directory; // must exist afterwards; empty: nothing to check
    } cases[] = {
        {Wide(b + "/a/b/c"), 1, b + "/a/b/c"},
        {Wide(b + "/t1/"), 1, b + "/t1"},
        {u" \t\u3000" + Wide(b + "/trim") + u"\u00A0\n ", 1, b + "/trim"},
        {Wide(b) + u"/\u00E9t\u00E9", 1, b + "/\xC3\xA9t\xC3\xA9"},
        // The walk stops at an empty level: only "x" is made, and "x//y/z" has no parent.
        {Wide(b + "/x//y/z"), 0, b + "/x"},
        {Wide(b + "/x//y"), 1, b + "/x/y"},
        // Something exists already: 1 at once, even for a file.
        {Wide(b + "/file"), 1, ""},
        {Wide(b + "/file/sub"), 0, ""},
        // Not local directory paths.
        {u" \t ", 0, ""},
        {u"relative/dir", 0, ""},
        {u"/proc/vetra/x", 0, ""},
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

// Below the root itself, where no test may create anything: a first level of one character
// is walked too.
std::vector<std::string> g_made;

TEST(LocalPath, FirstLevelOfOneCharacter) {
    const vetra::host::PathOperations recording = {
        [](const std::string&, vetra::platform::filesys::LocalRoot* root) {
            *root = {0, '/'};
            return true;
        },
        [](const char*) { return false; },
        [](const char* path) { g_made.push_back(path); },
        [](const char*) { return false; },
    };
    EXPECT_EQ(vetra::host::CreateLocalPath(u"/a/bc", recording), 0);
    EXPECT_EQ(g_made, (std::vector<std::string>{"/a/", "/a/bc/", "/a/bc/"}));
}

} // namespace
