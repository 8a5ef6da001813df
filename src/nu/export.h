#ifndef NU_EXPORT_H
#define NU_EXPORT_H

// NU_EXPORT marks what the library offers; everything else stays hidden inside it.
#if defined(NU_STATIC)
#define NU_EXPORT
#elif defined(_WIN32)
#if defined(NU_BUILDING)
#define NU_EXPORT __declspec(dllexport)
#else
#define NU_EXPORT __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define NU_EXPORT __attribute__((visibility("default")))
#else
#define NU_EXPORT
#endif

#endif
