// SPDX-License-Identifier: Apache-2.0
// WindowsMacros: words that <windows.h> and what it includes make macros of. Programs on Windows mostly include it first, and
// without NOMINMAX.
//
// For      the public headers, which are compiled behind these on systems that lack that header (CMakeLists.txt here).
#pragma once

#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define near
#define far
#define small char
#define hyper long long
#define interface struct
#define IN
#define OUT
#define OPTIONAL
#define CONST const
#define VOID void
#define TRUE 1
#define FALSE 0
#define ERROR 0
#define NO_ERROR 0
#define DELETE 0x10000
#define IGNORE 0
#define ABSOLUTE 1
#define RELATIVE 2
#define TRANSPARENT 1
#define OPAQUE 2
#define STRICT 1
#define INFINITE 0xFFFFFFFF
#define CALLBACK
#define PURE = 0
#define THIS void
#define CopyFile CopyFileW
#define CreateFile CreateFileW
#define DeleteFile DeleteFileW
#define FindText FindTextW
#define GetClassName GetClassNameW
#define GetCurrentTime GetTickCount
#define GetMessage GetMessageW
#define GetObject GetObjectW
#define MoveFile MoveFileW
#define ReportEvent ReportEventW
#define Yield()
