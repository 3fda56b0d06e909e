/* SORRELIN_EXPORT: what is part of the library's interface. Valid C11 and C++. */
#ifndef SORRELIN_PLATFORM_EXPORT_H_
#define SORRELIN_PLATFORM_EXPORT_H_

#if defined(SORRELIN_STATIC)
#define SORRELIN_EXPORT
#elif defined(_WIN32)
#if defined(SORRELIN_BUILDING)
#define SORRELIN_EXPORT __declspec(dllexport)
#else
#define SORRELIN_EXPORT __declspec(dllimport)
#endif
#else
#define SORRELIN_EXPORT __attribute__((visibility("default")))
#endif

#endif /* SORRELIN_PLATFORM_EXPORT_H_ */
