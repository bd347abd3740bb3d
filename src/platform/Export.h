// SPDX-License-Identifier: Apache-2.0
/// @file
/// Export: which symbols leave the shared libraries.
///
/// For      class and function declarations of the libraries; everything unmarked stays hidden.
/// Usage    OXA_PLATFORM_API, OXA_SCHEMA_API, OXA_IFC_API and so on, one for each library. The build defines
///          OXA_STATIC for a static build and `OXA_<LIBRARY>_BUILD` while that library itself is compiled.
#pragma once

/// @def OXA_API_EXPORT
/// Makes a symbol visible outside of the library that is compiled; nothing in a static build.

/// @def OXA_API_IMPORT
/// Says that a symbol comes from another shared library; nothing in a static build.

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

/// @def OXA_PLATFORM_API
/// Marks what belongs to the platform library: texts, time, streams, XML.
#if defined(OXA_PLATFORM_BUILD)
#define OXA_PLATFORM_API OXA_API_EXPORT
#else
#define OXA_PLATFORM_API OXA_API_IMPORT
#endif

/// @def OXA_SCHEMA_API
/// Marks what belongs to the schema library, with the provider.
#if defined(OXA_SCHEMA_BUILD)
#define OXA_SCHEMA_API OXA_API_EXPORT
#else
#define OXA_SCHEMA_API OXA_API_IMPORT
#endif

/// @def OXA_MODEL_API
/// Marks what belongs to the library of Model and its handles.
#if defined(OXA_MODEL_BUILD)
#define OXA_MODEL_API OXA_API_EXPORT
#else
#define OXA_MODEL_API OXA_API_IMPORT
#endif

/// @def OXA_IFC_API
/// Marks what belongs to the library of files and entities.
#if defined(OXA_IFC_BUILD)
#define OXA_IFC_API OXA_API_EXPORT
#else
#define OXA_IFC_API OXA_API_IMPORT
#endif

/// @def OXA_CHECK_API
/// Marks what belongs to the library that checks files.
#if defined(OXA_CHECK_BUILD)
#define OXA_CHECK_API OXA_API_EXPORT
#else
#define OXA_CHECK_API OXA_API_IMPORT
#endif

/// @def OXA_COMPARE_API
/// Marks what belongs to the library that compares two models.
#if defined(OXA_COMPARE_BUILD)
#define OXA_COMPARE_API OXA_API_EXPORT
#else
#define OXA_COMPARE_API OXA_API_IMPORT
#endif

/// @def OXA_TABLES_API
/// Marks what belongs to the library that tells models as tables.
#if defined(OXA_TABLES_BUILD)
#define OXA_TABLES_API OXA_API_EXPORT
#else
#define OXA_TABLES_API OXA_API_IMPORT
#endif

/// @def OXA_CONVERT_API
/// Marks what belongs to the library that changes a model as a whole.
#if defined(OXA_CONVERT_BUILD)
#define OXA_CONVERT_API OXA_API_EXPORT
#else
#define OXA_CONVERT_API OXA_API_IMPORT
#endif
