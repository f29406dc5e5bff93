// vetra_export.h - the export macro and the exported character type.
//
// Everything the shared library exports carries VETRA_API; everything else
// is hidden. This header defines no platform names.
#ifndef VETRA_EXPORT_H
#define VETRA_EXPORT_H

#if defined(_WIN32)
#if defined(VETRA_BUILDING)
#define VETRA_API __declspec(dllexport)
#elif defined(VETRA_STATIC)
#define VETRA_API // linked from a static library of the same objects
#else
#define VETRA_API __declspec(dllimport)
#endif
#else
#define VETRA_API __attribute__((visibility("default")))
#endif

/// Marks a member function that is defined in a public header, so that
/// callers inline it, and that the library exports all the same (the build
/// hides inline functions by default). On Windows the member is exported
/// with its class, which carries VETRA_API.
#if defined(_WIN32)
#define VETRA_INLINE_API
#else
#define VETRA_INLINE_API __attribute__((visibility("default")))
#endif

/// The character type of every text the library exchanges: one 16-bit
/// UTF-16 code unit. It is wchar_t where that is 16 bits wide, and char16_t
/// elsewhere (Linux), so document text always counts the same units.
#if defined(_WIN32)
typedef wchar_t vtchar;
#else
typedef char16_t vtchar;
#endif

/// The unsigned 32-bit type of counts, ids and version numbers at the
/// exported surface: uint32_t on Linux, and on Windows unsigned long, the
/// type of the platform's DWORD, so that Windows callers pass their DWORDs
/// and the exported names match what they expect.
#if defined(_WIN32)
typedef unsigned long vtdword;
#else
typedef unsigned int vtdword;
#endif

#endif // VETRA_EXPORT_H
