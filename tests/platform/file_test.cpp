// Tests of the file layer against the real system: what a replacement keeps of the old
// file, links, devices, short reads, a failed rename and a read-only target. What the
// reader and writer log for the usual failures is checked in tests/text.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file.h"
#include "text/file_fixture.h"

using namespace vetra::platform;
using vetra::test::ScratchFolder;

namespace {

const FileOps& Ops() {
    return SystemFileOps();
}

mode_t Mode(const std::string& path) {
    struct stat st {};
    lstat(path.c_str(), &st);
    return st.st_mode;
}

FileError Replace(const std::string& path, const std::string& bytes) {
    FileReplacement r;
    if (FileError error = Ops().beginReplacement(path.c_str(), r)) return error;
    if (FileError error = Ops().write(r.file, bytes.data(), bytes.size())) {
        Ops().abandonReplacement(r);
        return error;
    }
    return Ops().commitReplacement(r);
}

TEST(File, ReplacementKeepsModeAndFollowsLinks) {
    ScratchFolder folder;
    folder.Write("doc.xml", "old");
    chmod(folder.Path("doc.xml").c_str(), 0640);
    ASSERT_EQ(symlink("doc.xml", folder.Path("link.xml").c_str()), 0);
    EXPECT_EQ(Replace(folder.Path("link.xml"), "new"), 0);
    EXPECT_EQ(folder.Read("doc.xml"), "new");
    EXPECT_TRUE(S_ISLNK(Mode(folder.Path("link.xml"))));
    EXPECT_EQ(Mode(folder.Path("doc.xml")) & 07777, 0640u);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"doc.xml", "link.xml"}));

    const mode_t old = umask(027);
    EXPECT_EQ(Replace(folder.Path("fresh.xml"), "x"), 0);
    umask(old);
    EXPECT_EQ(Mode(folder.Path("fresh.xml")) & 07777, 0640u);
}

TEST(File, FailuresLeaveTheTargetAsItWas) {
    ScratchFolder folder;
    // A file that may not be written is refused up front, except for root, who may.
    folder.Write("ro.xml", "old");
    chmod(folder.Path("ro.xml").c_str(), 0444);
    EXPECT_EQ(Replace(folder.Path("ro.xml"), "new"), geteuid() == 0 ? 0 : EACCES);

    // The rename fails: the target became a folder meanwhile.
    folder.Write("doc.xml", "old");
    FileReplacement r;
    ASSERT_EQ(Ops().beginReplacement(folder.Path("doc.xml").c_str(), r), 0);
    EXPECT_FALSE(r.temporary.empty());
    std::filesystem::remove(folder.Path("doc.xml"));
    std::filesystem::create_directories(folder.Path("doc.xml/sub"));
    EXPECT_EQ(Ops().commitReplacement(r), EISDIR);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"doc.xml", "ro.xml"}));
}

TEST(File, ShortReadIsAnError) {
    ScratchFolder folder;
    const std::string path = folder.Write("doc.xml", std::string(100, 'a'));
    FileHandle file;
    int64_t length = 0;
    ASSERT_EQ(Ops().openForReading(path.c_str(), file, length), 0);
    EXPECT_EQ(length, 100);
    ASSERT_EQ(truncate(path.c_str(), 50), 0);
    char buffer[100];
    EXPECT_EQ(Ops().readAt(file, 0, buffer, 100), EIO);
    EXPECT_EQ(Ops().readAt(file, 10, buffer, 40), 0);
    EXPECT_EQ(Ops().close(file), 0);
    EXPECT_FALSE(file.IsOpen());
}

TEST(File, DevicesAreWrittenInPlace) {
    FileReplacement r;
    ASSERT_EQ(Ops().beginReplacement("/dev/null", r), 0);
    EXPECT_TRUE(r.temporary.empty());
    EXPECT_EQ(Ops().write(r.file, "x", 1), 0);
    EXPECT_EQ(Ops().commitReplacement(r), 0);
    EXPECT_TRUE(S_ISCHR(Mode("/dev/null")));
    // A write the system refuses is reported, never taken for done.
    if (access("/dev/full", W_OK) == 0) {
        ASSERT_EQ(Ops().beginReplacement("/dev/full", r), 0);
        EXPECT_EQ(Ops().write(r.file, "x", 1), ENOSPC);
        Ops().abandonReplacement(r);
    }
}

} // namespace
