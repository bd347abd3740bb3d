// SPDX-License-Identifier: Apache-2.0
// LateZip: the functions of libzip that src/Model reads archives with.
#include <zip.h>

#include "late/LateLibrary.h"

namespace {

constexpr oxa::tool::LateLibrary g_zip(OXA_LATE_ZIP);

}   // namespace

OXA_LATE(g_zip, int, zip_compression_method_supported, (zip_int32_t iMethod, int iCompress), (iMethod, iCompress))
OXA_LATE(g_zip, void, zip_discard, (zip_t * pArchive), (pArchive))
OXA_LATE(g_zip, int, zip_error_code_system, (const zip_error_t* pError), (pError))
OXA_LATE(g_zip, int, zip_error_code_zip, (const zip_error_t* pError), (pError))
OXA_LATE(g_zip, void, zip_error_init, (zip_error_t * pError), (pError))
OXA_LATE(g_zip, int, zip_fclose, (zip_file_t * pFile), (pFile))
OXA_LATE(g_zip, zip_error_t*, zip_file_get_error, (zip_file_t * pFile), (pFile))
OXA_LATE(g_zip, zip_file_t*, zip_fopen_index, (zip_t * pArchive, zip_uint64_t iFile, zip_flags_t flags),
         (pArchive, iFile, flags))
OXA_LATE(g_zip, zip_int64_t, zip_fread, (zip_file_t * pFile, void* pBytes, zip_uint64_t iBytes),
         (pFile, pBytes, iBytes))
OXA_LATE(g_zip, zip_error_t*, zip_get_error, (zip_t * pArchive), (pArchive))
OXA_LATE(g_zip, const char*, zip_get_name, (zip_t * pArchive, zip_uint64_t iFile, zip_flags_t flags),
         (pArchive, iFile, flags))
OXA_LATE(g_zip, zip_int64_t, zip_get_num_entries, (zip_t * pArchive, zip_flags_t flags), (pArchive, flags))
OXA_LATE(g_zip, zip_t*, zip_open_from_source, (zip_source_t * pSource, int iFlags, zip_error_t* pError),
         (pSource, iFlags, pError))
OXA_LATE(g_zip, zip_source_t*, zip_source_buffer_create,
         (const void* pBytes, zip_uint64_t iBytes, int iFree, zip_error_t* pError), (pBytes, iBytes, iFree, pError))
OXA_LATE(g_zip, zip_source_t*, zip_source_file_create,
         (const char* pName, zip_uint64_t iStart, zip_int64_t iBytes, zip_error_t* pError),
         (pName, iStart, iBytes, pError))
OXA_LATE(g_zip, void, zip_source_free, (zip_source_t * pSource), (pSource))
OXA_LATE(g_zip, int, zip_stat_index, (zip_t * pArchive, zip_uint64_t iFile, zip_flags_t flags, zip_stat_t* pStat),
         (pArchive, iFile, flags, pStat))
OXA_LATE(g_zip, void, zip_stat_init, (zip_stat_t * pStat), (pStat))
