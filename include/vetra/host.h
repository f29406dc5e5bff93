// host.h - host helpers: debug traces, thread names, directory creation and version queries.
//
// Stateless functions: none keeps anything between calls, and all of them may be called from
// several threads at once. The plain-named functions have C linkage; the two VETRA_Trace
// overloads are C++ functions.
#ifndef VETRA_HOST_H
#define VETRA_HOST_H

#include <cstdint>

#include "vetra/vetra_export.h"

/// Formats a text as printf does and writes it to the debug output, which on Linux is
/// standard error (file descriptor 2): one write for the whole text, as UTF-8, with nothing
/// added (no prefix, no time, no line end). On Windows it is one OutputDebugStringA call,
/// which an attached debugger or a system-wide listener shows. There is no length limit. An empty
/// text writes nothing. The text goes out up to its first null character (a `%c` of 0 ends it).
///
/// The format follows the C library's printf rules: `%s` and `%c` take narrow text, `%ls`
/// takes a `wchar_t` string.
///
/// Throws std::system_error whose code().value(), read as uint32_t, is 0x80070057 when
/// `format` is null and 0x80004005 when the C library refuses the format; std::bad_alloc
/// when the text finds no memory. As with any write to standard error, a pipe closed at its
/// other end raises SIGPIPE unless the application ignores that signal.
VETRA_API void VETRA_Trace(const char* format, ...);

/// The same for a UTF-16 format, whose text is written as UTF-8 (a lone surrogate becomes
/// U+FFFD); on Windows it goes to one OutputDebugStringW call (under Wine, seen only on its
/// debug channel: WINEDEBUG=+debugstr). The conversions follow the wide printf of the
/// library's original platform, not glibc's wprintf:
/// - `%s`, `%ls`, `%ws` take a `const vtchar*` string; `%S` and `%hs` a narrow `const char*`
///   string, read as UTF-8 (an ill-formed byte becomes U+FFFD). A null string prints
///   "(null)". Width counts UTF-16 units of the output. Precision bounds what is read: units
///   of a `vtchar` string, bytes of a narrow one, so neither needs a terminator within it;
///   a character that the precision would split (a surrogate pair, a UTF-8 sequence) is
///   left out whole.
/// - `%c`, `%lc`, `%wc` take a vtchar (passed as int); `%C` and `%hc` a narrow char, where
///   a byte above 0x7F, which is no UTF-8 character alone, prints U+FFFD.
/// - `%d %i %u %o %x %X %e %E %f %F %g %G %a %A %p` and `%%` behave as in glibc's printf,
///   with the flags `- + space # 0`, width and precision as numbers or `*`, and the length
///   modifiers `hh h l ll j z t L` with the platform's sizes (`l` is 64 bits on Linux, 32
///   on Windows), plus `I32`, `I64` and `I` (pointer-sized).
/// - Anything else, `%n` and positional arguments (`%1$d`) included, refuses the format.
///
/// Throws as the narrow overload: 0x80070057 for a null format, 0x80004005 for a refused one.
VETRA_API void VETRA_Trace(const vtchar* format, ...);

extern "C" {

/// Names the calling thread, as debuggers, `top -H` and /proc/self/task/N/comm show it. On
/// Linux a thread name holds at most 15 bytes: a longer `name` (UTF-8) is cut to the longest
/// prefix of at most 15 bytes that ends on a character boundary. A null `name` does nothing.
/// There is no way to name another thread, and no result. On Windows the name (ANSI code
/// page, not cut) goes to an attached debugger through the thread-naming exception, which
/// is caught again when no debugger takes it, and to SetThreadDescription where the system
/// has it.
VETRA_API void VETRA_SetThreadName(const char* name);

/// Makes sure that the directory path `path` exists, creating each missing level with mode
/// 0777 less the process's umask. Returns 1 if the path exists afterwards, 0 otherwise.
///
/// On Windows the path is a drive-letter path ("C:\data\x") of at most 260 characters,
/// on a removable, fixed or network drive (GetDriveTypeW); the separator is the backslash,
/// or the slash in a path without any backslash; levels are made with CreateDirectoryW and
/// the result is GetFileAttributesW's directory bit. Relative and UNC paths, CD-ROMs and
/// RAM disks give 0. The rest of what follows holds there too, with those rules.
///
/// On Linux, in order:
/// - null counts as empty. White space is trimmed from the end, then from the start; it is
///   the UTF-16 units U+0009 to U+000D, U+0020, U+0085, U+00A0, U+1680, U+2000 to U+200A,
///   U+2028, U+2029, U+202F, U+205F and U+3000.
/// - 0 for an empty path, a path with a lone surrogate, a path longer than 4,095 bytes of
///   UTF-8, and a path that is not absolute (first character not '/').
/// - 0 when the nearest existing ancestor lies on a pseudo file system (proc, sysfs, devpts,
///   cgroup, debugfs, tracefs, securityfs, configfs, efivarfs, bpf, mqueue, hugetlbfs,
///   autofs, ...) or on optical media (iso9660, udf), even if the path exists. Disks,
///   network file systems, tmpfs and overlay are accepted.
/// - 1 at once if something exists at the path, also a file ("/etc/passwd" gives 1, while
///   "/etc/passwd/" names a directory, which is missing, and gives 0).
/// - Otherwise each level is created from the top, then the whole path. The walk stops at
///   the first empty level (two '/' in a row): "/tmp/a//b/c" creates /tmp/a but not
///   /tmp/a/b, so the last call fails unless /tmp/a/b exists. A trailing '/' changes nothing.
/// - The result is then 1 if the path names a directory (symbolic links followed).
///
/// Every path is a directory path: "/tmp/new.txt" becomes a directory. Creation failures
/// (permissions, a file in the way, a read-only file system) are not reported apart; they
/// give 0 through the final check. The caller's string is not changed. Throws std::bad_alloc
/// when out of memory.
VETRA_API int VETRA_CreateLocalPath(const vtchar* path);

/// Reads the file version from the version resource of the PE file (a 32- or 64-bit
/// executable or library of the library's original platform) named by `file`. On Windows
/// the system's version service reads it (GetFileVersionInfoW, VerQueryValueW); on Linux
/// the library reads the file itself, with the same result for the same file.
///
/// Returns 1 and stores the fixed file information's dwFileVersionMS in `*versionMS` and
/// dwFileVersionLS in `*versionLS` (version 1.2.3.4 gives 0x00010002 and 0x00030004); this
/// is the file version, not the product version. A null output pointer is skipped, so both
/// null only asks whether the file has a version.
///
/// Returns 0, leaving both outputs unchanged, when `file` is null or holds a lone
/// surrogate, the file is missing, unreadable or not a regular file, is no PE file, has no
/// version resource, or any structure on the way is truncated or points outside the file.
/// The file is read at the offsets its headers name, never read whole; the work is bounded
/// for any content. Throws std::bad_alloc when out of memory.
VETRA_API int VETRA_GetFileVersion(const vtchar* file, vtdword* versionMS, vtdword* versionLS);

/// Asks the platform's web browser library for its version: on Windows DllGetVersion of
/// "shdocvw.dll", loaded and freed at each call, which gives 1 with `*major` and `*minor`
/// set (under Wine, Wine's own numbers), or 0 with both 0. There is no such library on
/// Linux: sets `*major` and `*minor` to 0 (each when not null) and returns 0.
VETRA_API int VETRA_GetBrowserVersion(vtdword* major, vtdword* minor);

} // extern "C"

#endif // VETRA_HOST_H
