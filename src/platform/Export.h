// SPDX-License-Identifier: Apache-2.0
// Export: which symbols leave the shared libraries.
//
// For      class and function declarations of the libraries; everything unmarked stays hidden.
// Usage    OXA_PLATFORM_API, OXA_SCHEMA_API, OXA_IFC_API and so on, one for each library. The build defines
//          OXA_STATIC for a static build and OXA_<LIBRARY>_BUILD while that library itself is compiled.
#pragma once

#if defined(OXA_STATIC)
#define OXA_API_EXPORT
#define OXA_API_IMPORT
#elif defined(_WIN32)
#define OXA_API_EXPORT __declspec(dllexport)
#define OXA_API_IMPORT __declspec(dllimport)
#else
#define OXA_API_EXPORT __attribute__((visibility("default")))
#define OXA_API_IMPORT __attribute__((visibility("default")))
#endif

#if defined(OXA_PLATFORM_BUILD)
#define OXA_PLATFORM_API OXA_API_EXPORT
#else
#define OXA_PLATFORM_API OXA_API_IMPORT
#endif

#if defined(OXA_SCHEMA_BUILD)
#define OXA_SCHEMA_API OXA_API_EXPORT
#else
#define OXA_SCHEMA_API OXA_API_IMPORT
#endif

#if defined(OXA_MODEL_BUILD)
#define OXA_MODEL_API OXA_API_EXPORT
#else
#define OXA_MODEL_API OXA_API_IMPORT
#endif

#if defined(OXA_IFC_BUILD)
#define OXA_IFC_API OXA_API_EXPORT
#else
#define OXA_IFC_API OXA_API_IMPORT
#endif

#if defined(OXA_COMPARE_BUILD)
#define OXA_COMPARE_API OXA_API_EXPORT
#else
#define OXA_COMPARE_API OXA_API_IMPORT
#endif

#if defined(OXA_CONVERT_BUILD)
#define OXA_CONVERT_API OXA_API_EXPORT
#else
#define OXA_CONVERT_API OXA_API_IMPORT
#endif
