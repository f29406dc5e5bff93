// debug_trace.cpp - VETRA_Trace and VETRA_SetThreadName: a formatted text to the debug
// output in one piece, and the calling thread's name.
//
// The text grows to whatever the format gives; there is no fixed buffer. Failures leave as
// std::system_error carrying the status of the original platform, or std::bad_alloc. The
// variadic functions only start and end their argument lists: no exception crosses them.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <system_error>

#include "host/wide_format.h"
#include "platform/debug_output.h"
#include "platform/thread_name.h"
#include "vetra/host.h"

namespace {

enum Status : uint32_t {
    kDone = 0,
    kInvalidArgument = 0x80070057,
    kFailed = 0x80004005,
    kOutOfMemory = 0x8007000E,
};

class StatusCategory : public std::error_category {
  public:
    const char* name() const noexcept override { return "vetra"; }
    std::string message(int status) const override {
        switch (static_cast<uint32_t>(status)) {
        case kInvalidArgument:
            return "null format";
        case kFailed:
            return "format refused";
        default:
            return "unknown status";
        }
    }
};

[[noreturn]] void Throw(Status status) {
    if (status == kOutOfMemory) throw std::bad_alloc();
    static const StatusCategory category;
    throw std::system_error(static_cast<int>(status), category, "VETRA_Trace");
}

// The text goes out as a C string would: up to its first null.
void Emit(Status status, const std::string& text) {
    if (status != kDone) Throw(status);
    const size_t length = std::strlen(text.c_str());
    if (length > 0) vetra::platform::WriteDebugOutput(text.data(), length);
}

Status FormatNarrow(const char* format, va_list args, std::string& text) {
    va_list counting;
    va_copy(counting, args);
    const int length = std::vsnprintf(nullptr, 0, format, counting);
    va_end(counting);
    if (length < 0) return kFailed;
    try {
        text.resize(static_cast<size_t>(length));
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    return kDone;
}

Status FormatWide(const vtchar* format, va_list args, std::u16string& text) {
    try {
        if (!vetra::host::FormatWide(reinterpret_cast<const char16_t*>(format), args, text)) {
            return kFailed;
        }
    } catch (const std::bad_alloc&) {
        return kOutOfMemory;
    }
    return kDone;
}

} // namespace

void VETRA_Trace(const char* format, ...) {
    std::string text;
    va_list args;
    va_start(args, format);
    const Status status = format ? FormatNarrow(format, args, text) : kInvalidArgument;
    va_end(args);
    Emit(status, text);
}

void VETRA_Trace(const vtchar* format, ...) {
    std::u16string text;
    va_list args;
    va_start(args, format);
    const Status status = format ? FormatWide(format, args, text) : kInvalidArgument;
    va_end(args);
    if (status != kDone) Throw(status);
    // The text goes out as a C string would: up to its first null.
    const size_t length = std::char_traits<char16_t>::length(text.c_str());
    if (length > 0) vetra::platform::WriteDebugOutputWide(text.data(), length);
}

extern "C" void VETRA_SetThreadName(const char* name) {
    if (name != nullptr) vetra::platform::SetCurrentThreadName(name);
}
