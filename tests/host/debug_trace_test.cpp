// Tests of VETRA_Trace with standard error captured in a temporary file (texts of several
// megabytes included), its failures and their status codes, and of VETRA_SetThreadName on
// the calling thread.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <pthread.h>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>

#include "vetra/host.h"

namespace {

// What `write` sends to standard error.
std::string CaptureStderr(const std::function<void()>& write) {
    FILE* file = std::tmpfile();
    EXPECT_NE(file, nullptr);
    const int saved = ::dup(STDERR_FILENO);
    ::dup2(::fileno(file), STDERR_FILENO);
    write();
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    std::string text;
    std::rewind(file);
    char buffer[65536];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        text.append(buffer, n);
    std::fclose(file);
    return text;
}

// What each call writes, or the status it throws with, writing nothing.
TEST(Trace, WritesExactlyTheTextOrThrowsItsStatus) {
    const std::string large(3 << 20, 'x');
    const std::u16string largeWide(1 << 20, u'\u20AC');
    std::string largeUtf8;
    for (size_t i = 0; i < largeWide.size(); ++i)
        largeUtf8 += "\xE2\x82\xAC";
    const struct {
        const char* what;
        std::function<void()> trace;
        std::string expected;
        uint32_t status = 0;
    } cases[] = {
        {"empty", [] { VETRA_Trace(""); }, ""},
        {"decimal and line feed", [] { VETRA_Trace("%d\n", 5); }, "5\n"},
        {"ends at a null character", [] { VETRA_Trace("a%cb", 0); }, "a"},
        {"megabytes", [&] { VETRA_Trace("[%s]", large.c_str()); }, "[" + large + "]"},
        {"wide, as UTF-8",
         [] { VETRA_Trace(u"%s %S \U0001F600 %d\n", u"\u00E9t\u00E9", "\xE2\x82\xAC", 7); },
         "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 7\n"},
        {"wide, lone surrogate", [] { VETRA_Trace(u"%c", 0xDC00); }, "\xEF\xBF\xBD"},
        {"wide megabytes", [&] { VETRA_Trace(u"%s", largeWide.c_str()); }, largeUtf8},
        {"null narrow format", [] { VETRA_Trace(static_cast<const char*>(nullptr)); }, "",
         0x80070057},
        {"null wide format", [] { VETRA_Trace(static_cast<const vtchar*>(nullptr)); }, "",
         0x80070057},
        {"refused wide format", [] { VETRA_Trace(u"%d%n", 1, nullptr); }, "", 0x80004005},
        // The C locale has no multibyte form for U+00E9.
        {"refused narrow conversion", [] { VETRA_Trace("%ls", L"\u00E9"); }, "", 0x80004005},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        uint32_t status = 0;
        const std::string got = CaptureStderr([&] {
            try {
                c.trace();
            } catch (const std::system_error& e) {
                status = static_cast<uint32_t>(e.code().value());
            }
        });
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(got.size(), c.expected.size());
        EXPECT_TRUE(got == c.expected);
    }
}

std::string ThreadName() {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    return name;
}

TEST(ThreadName, NamesTheCallingThreadWithin15Bytes) {
    const struct {
        const char* name;
        std::string expected;
    } cases[] = {
        {"worker", "worker"},
        {"fifteen-bytes-x", "fifteen-bytes-x"},
        {"sixteen-bytes-xy", "sixteen-bytes-x"},
        // "\xC3\xA9" would straddle the 15th byte: it goes whole.
        {"fourteen-bytes\xC3\xA9", "fourteen-bytes"},
        {"thirteen-byte\xE2\x82\xAC", "thirteen-byte"},
        {nullptr, "before"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expected);
        std::string named, main = ThreadName();
        std::thread([&] {
            pthread_setname_np(pthread_self(), "before");
            VETRA_SetThreadName(c.name);
            named = ThreadName();
        }).join();
        EXPECT_EQ(named, c.expected);
        EXPECT_EQ(ThreadName(), main);
    }
}

} // namespace
