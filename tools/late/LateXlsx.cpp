// SPDX-License-Identifier: Apache-2.0
// LateXlsx: the functions of libxlsxwriter that src/Tables writes workbooks with.
#include <xlsxwriter.h>

#include "late/LateLibrary.h"

namespace {

constexpr oxa::tool::LateLibrary g_xlsx(OXA_LATE_XLSX);

}   // namespace

OXA_LATE(g_xlsx, void, format_set_bold, (lxw_format * pFormat), (pFormat))
OXA_LATE(g_xlsx, char*, lxw_strerror, (lxw_error eError), (eError))
OXA_LATE(g_xlsx, void, lxw_workbook_free, (lxw_workbook * pBook), (pBook))
OXA_LATE(g_xlsx, lxw_format*, workbook_add_format, (lxw_workbook * pBook), (pBook))
OXA_LATE(g_xlsx, lxw_worksheet*, workbook_add_worksheet, (lxw_workbook * pBook, const char* pName), (pBook, pName))
OXA_LATE(g_xlsx, lxw_error, workbook_close, (lxw_workbook * pBook), (pBook))
OXA_LATE(g_xlsx, lxw_worksheet*, workbook_get_worksheet_by_name, (lxw_workbook * pBook, const char* pName),
         (pBook, pName))
OXA_LATE(g_xlsx, lxw_workbook*, workbook_new_opt, (const char* pFile, lxw_workbook_options* pOptions),
         (pFile, pOptions))
OXA_LATE(g_xlsx, void, worksheet_freeze_panes, (lxw_worksheet * pSheet, lxw_row_t iRow, lxw_col_t iColumn),
         (pSheet, iRow, iColumn))
OXA_LATE(g_xlsx, lxw_error, worksheet_write_boolean,
         (lxw_worksheet * pSheet, lxw_row_t iRow, lxw_col_t iColumn, int iValue, lxw_format* pFormat),
         (pSheet, iRow, iColumn, iValue, pFormat))
OXA_LATE(g_xlsx, lxw_error, worksheet_write_number,
         (lxw_worksheet * pSheet, lxw_row_t iRow, lxw_col_t iColumn, double fValue, lxw_format* pFormat),
         (pSheet, iRow, iColumn, fValue, pFormat))
OXA_LATE(g_xlsx, lxw_error, worksheet_write_string,
         (lxw_worksheet * pSheet, lxw_row_t iRow, lxw_col_t iColumn, const char* pText, lxw_format* pFormat),
         (pSheet, iRow, iColumn, pText, pFormat))
