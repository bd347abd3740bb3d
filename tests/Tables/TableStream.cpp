// SPDX-License-Identifier: Apache-2.0
// TableStream: tables of a file as Arrow streams, for a program of another language in the same process.
//
// For      tests/tools/verbs/table_forms.py, which reads them with pyarrow.
#include "Tables/Arrow.h"

extern "C" {

// Null for what can't be read.
void* modelOpen(const char* pPath) try {
    return new oxa::Model(oxa::Model::open(pPath));
} catch (const std::exception&) {
    return nullptr;
}

void modelClose(void* pModel) { delete static_cast<oxa::Model*>(pModel); }

void tableStream(const void* pModel, const char* pPath, const char* pTable, ArrowArrayStream* pOut) {
    // Small batches, so that a table is several.
    oxa::tables::stream(*static_cast<const oxa::Model*>(pModel), oxa::tables::fileInfo(pPath), pTable, pOut,
                        {.rows = 1000});
}

}   // extern "C"
