// win32_platform_test.cpp - the Windows side of the platform layer against the system's own
// answers: what the converters, the file streams, the drive rules, the thread name and the
// time and network tables give there. Run under Wine by tools/test-windows.sh.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <winsock2.h>

#include <windows.h>

#include <iphlpapi.h>

#include "platform/cpu_times.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/net_tables.h"
#include "platform/text_codec.h"
#include "platform/thread_name.h"
#include "vetra/host.h"

namespace vetra::platform {
namespace {

TEST(Win32TextCodec, SystemConvertersDecide) {
    // The pages the layer above converts itself are refused; the rest is the system's,
    // best-fit mapping and undefined bytes included.
    for (uint32_t page : {1200u, 1201u, 12000u, 12001u}) {
        EXPECT_EQ(MultiByteToWide(page, "ab", 2, nullptr, 0), 0) << page;
        EXPECT_EQ(WideToMultiByte(page, u"ab", 2, nullptr, 0, nullptr), 0) << page;
    }
    EXPECT_EQ(SystemCodePage(), ::GetACP());

    char bytes[8] = {};
    bool used = false;
    ASSERT_EQ(WideToMultiByte(1252, u"\u0101\u4E00", 2, bytes, sizeof bytes, &used), 2);
    EXPECT_EQ(std::string(bytes, 2), "a?");
    EXPECT_TRUE(used);
    // UTF-8 takes no used-default flag from the system; the call must not fail for it.
    EXPECT_EQ(WideToMultiByte(65001, u"\u00E9", 1, bytes, sizeof bytes, &used), 2);
    EXPECT_FALSE(used);

    char16_t wide[4] = {};
    ASSERT_EQ(MultiByteToWide(1252, "\x81\x80", 2, wide, 4), 2);
    EXPECT_EQ(wide[0], 0x81);
    EXPECT_EQ(wide[1], 0x20AC);
    EXPECT_EQ(MultiByteToWide(1252, "\x81\x80", 2, nullptr, 0), 2);
    EXPECT_EQ(MultiByteToWide(1252, "\x81\x80", 2, wide, 1), 0); // too little room
}

class Win32Files : public ::testing::Test {
  protected:
    void SetUp() override {
        wchar_t base[MAX_PATH];
        ASSERT_NE(::GetTempPathW(MAX_PATH, base), 0u);
        dir_ = std::wstring(base) + L"vetra-win32-" + std::to_wstring(::GetCurrentProcessId());
        ::CreateDirectoryW(dir_.c_str(), nullptr);
        utf8_ = Utf8(dir_);
    }
    void TearDown() override {
        ::DeleteFileW((dir_ + L"\\file.txt").c_str());
        ::RemoveDirectoryW(dir_.c_str());
    }
    static std::wstring Slashed(std::wstring path) {
        std::replace(path.begin(), path.end(), L'\\', L'/');
        return path;
    }
    static std::string Utf8(const std::wstring& wide) {
        std::string out(wide.size() * 3, '\0');
        out.resize(::WideCharToMultiByte(CP_UTF8, 0, wide.data(), int(wide.size()), out.data(),
                                         int(out.size()), nullptr, nullptr));
        return out;
    }
    bool Write(const std::string& path, const std::string& text) {
        FileReplacement out;
        const FileOps& ops = SystemFileOps();
        return ops.beginReplacement(path.c_str(), out) == 0 &&
               ops.write(out.file, text.data(), text.size()) == 0 &&
               ops.commitReplacement(out) == 0;
    }
    std::wstring dir_;
    std::string utf8_;
};

TEST_F(Win32Files, ErrorsAreTheSystemsCodes) {
    const FileOps& ops = SystemFileOps();
    FileHandle file;
    int64_t length = 0;
    struct Case {
        std::string path;
        FileError error;
    } cases[] = {
        {utf8_ + "\\missing.txt", ERROR_FILE_NOT_FOUND},
        {utf8_ + "\\missing\\x.txt", ERROR_PATH_NOT_FOUND},
        {utf8_, ERROR_ACCESS_DENIED}, // a directory
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ops.openForReading(c.path.c_str(), file, length), c.error) << c.path;
        EXPECT_FALSE(file.IsOpen());
        const std::u16string message = FileErrorMessage(c.error);
        EXPECT_FALSE(message.empty());
        EXPECT_EQ(message.find_first_of(u"\r\n"), std::u16string::npos);
    }
}

TEST_F(Win32Files, SaveReplacesTheFileWhole) {
    const std::string path = utf8_ + "\\file.txt";
    ASSERT_TRUE(Write(path, "first, longer text"));
    ASSERT_TRUE(Write(path, "second"));
    // A replacement given up leaves the old content and no temporary file.
    const FileOps& ops = SystemFileOps();
    FileReplacement abandoned;
    ASSERT_EQ(ops.beginReplacement(path.c_str(), abandoned), 0);
    ASSERT_EQ(ops.write(abandoned.file, "third", 5), 0);
    ops.abandonReplacement(abandoned);
    // A read-only file is refused before anything is written.
    const std::wstring wide = dir_ + L"\\file.txt";
    ::SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_READONLY);
    FileReplacement refused;
    EXPECT_EQ(ops.beginReplacement(path.c_str(), refused), FileError(ERROR_ACCESS_DENIED));
    ::SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);

    FileHandle file;
    int64_t length = 0;
    ASSERT_EQ(ops.openForReading(path.c_str(), file, length), 0);
    ASSERT_EQ(length, 6);
    char text[6];
    EXPECT_EQ(ops.readAt(file, 0, text, 6), 0);
    EXPECT_EQ(std::string(text, 6), "second");
    EXPECT_EQ(ops.readAt(file, 4, text, 6), FileError(ERROR_HANDLE_EOF));
    EXPECT_EQ(ops.close(file), 0);
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW((dir_ + L"\\*").c_str(), &found);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    int files = 0;
    do {
        files += (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
    EXPECT_EQ(files, 1);
}

TEST(Win32FileSystem, DriveLetterRules) {
    struct Case {
        std::string path;
        bool local;
        size_t firstSeparator;
        char separator;
    } cases[] = {
        {"C:\\data\\x", true, 2, '\\'},
        {"C:/data/new/", true, 2, '/'},
        {"C:/data\\x", true, 7, '\\'}, // any backslash makes slashes plain characters
        {"C:", false, 0, 0},
        {"C:x", false, 0, 0},
        {"\\\\server\\share\\x", false, 0, 0},
        {"data\\x", false, 0, 0},
        {"B:\\x", false, 0, 0},                          // no such drive
        {"C:\\" + std::string(257, 'a'), true, 2, '\\'}, // 260 characters
        {"C:\\" + std::string(258, 'a'), false, 0, 0},   // 261
        {"C:\\\xC3\xA9t\xC3\xA9\\x", true, 2, '\\'},     // UTF-8 counts as characters
    };
    for (const Case& c : cases) {
        filesys::LocalRoot root{99, '?'};
        EXPECT_EQ(filesys::FindLocalRoot(c.path, &root), c.local) << c.path;
        if (!c.local) continue;
        EXPECT_EQ(root.firstSeparator, c.firstSeparator) << c.path;
        EXPECT_EQ(root.separator, c.separator) << c.path;
    }
}

TEST_F(Win32Files, CreateLocalPathOnADrive) {
    const std::wstring file = dir_ + L"\\file.txt";
    ASSERT_TRUE(Write(utf8_ + "\\file.txt", "x"));
    const struct {
        std::wstring path;
        int result;
        const wchar_t* made; // a directory that must exist afterwards, or null
    } cases[] = {
        {L"  " + dir_ + L"\\a\\b\\  ", 1, L"\\a\\b"},
        {Slashed(dir_) + L"/s/t", 1, L"\\s\\t"}, // no backslash: slashes separate
        {dir_ + L"/u/v", 0, nullptr},    // "vetra-.../u/v" is one name to the walk, without parent
        {file, 1, nullptr},              // a file found at once counts
        {file + L"\\below", 0, nullptr}, // nothing can be made below a file
    };
    for (const auto& c : cases) {
        EXPECT_EQ(VETRA_CreateLocalPath(c.path.c_str()), c.result) << Utf8(c.path);
        if (c.made == nullptr) continue;
        const DWORD attributes = ::GetFileAttributesW((dir_ + c.made).c_str());
        EXPECT_NE(attributes & FILE_ATTRIBUTE_DIRECTORY, 0u) << Utf8(c.made);
    }
    for (const wchar_t* made : {L"\\a\\b", L"\\a", L"\\s\\t", L"\\s"})
        ::RemoveDirectoryW((dir_ + made).c_str());
}

TEST(Win32ThreadName, NamesTheCallingThreadAndReturns) {
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*);
    const auto get = reinterpret_cast<GetDescription>(reinterpret_cast<void (*)()>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription")));
    SetCurrentThreadName("vetra worker with a long name");
    if (get == nullptr) GTEST_SKIP() << "the system keeps no thread descriptions";
    PWSTR name = nullptr;
    ASSERT_GE(get(::GetCurrentThread(), &name), 0);
    EXPECT_STREQ(name, L"vetra worker with a long name");
    ::LocalFree(name);
}

uint64_t Ticks(const FILETIME& t) {
    return uint64_t(t.dwHighDateTime) << 32 | t.dwLowDateTime;
}

TEST(Win32CpuTimes, TheSystemsFigures) {
    uint64_t idle = 0, kernel = 0, user = 0;
    ASSERT_EQ(ReadSystemTimes(&idle, &kernel, &user), 1);
    EXPECT_GE(kernel, idle); // kernel time counts the idle time

    void* self = OpenProcessTimes(::GetCurrentProcessId());
    ASSERT_NE(self, nullptr);
    uint64_t creation, exit;
    ASSERT_EQ(ReadTaskTimes(self, &creation, &exit, &kernel, &user), 1);
    FILETIME c, e, k, u;
    ASSERT_TRUE(::GetProcessTimes(::GetCurrentProcess(), &c, &e, &k, &u));
    EXPECT_EQ(creation, Ticks(c));
    EXPECT_LE(user, Ticks(u)); // read first, and the counters only grow
    CloseTaskTimes(self);

    // Under Wine a thread's times read 0; on Windows they match the system's call.
    void* thread = OpenThreadTimes(::GetCurrentThreadId());
    ASSERT_NE(thread, nullptr);
    ASSERT_EQ(ReadTaskTimes(thread, &creation, &exit, &kernel, &user), 1);
    ASSERT_TRUE(::GetThreadTimes(::GetCurrentThread(), &c, &e, &k, &u));
    EXPECT_LE(user, Ticks(u));
    CloseTaskTimes(thread);
    EXPECT_EQ(OpenProcessTimes(0xFFFFFFF0u), nullptr);
}

TEST(Win32NetTables, RowsOfTheIpHelper) {
    ULONG size = 0;
    ::GetIfTable(nullptr, &size, TRUE);
    std::vector<char> buffer(size);
    auto* table = reinterpret_cast<MIB_IFTABLE*>(buffer.data());
    ASSERT_EQ(::GetIfTable(table, &size, TRUE), DWORD(NO_ERROR));
    std::vector<NetInterfaceRow> rows;
    ASSERT_TRUE(OpenSystemNetTables()->ReadInterfaces(&rows));
    ASSERT_EQ(rows.size(), table->dwNumEntries);
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].index, table->table[i].dwIndex);
        char16_t name[256];
        const size_t units = DecodeDescription(rows[i].descr, rows[i].descrLen, name, 256);
        EXPECT_EQ(units, rows[i].descrLen); // the ANSI page holds one byte a character
    }
}

} // namespace
} // namespace vetra::platform
