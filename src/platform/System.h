// SPDX-License-Identifier: Apache-2.0
// System: what the libraries ask of the operating system beyond the standard library. Each system has a source.
//
// Callers  the sources of this folder, and the memory of the core (Format/Ifc/Memory/ZeroedBytes.cpp).
// Threads  any number at once; no state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <vector>

#include "platform/Export.h"

namespace oxa::platform {

// Hands what the process and the system hold back of a file to the disk. False, and errno, when that fails.
[[nodiscard]] bool boFlushToDisk(std::FILE* pFile);

// fopen, for every path: null, and errno, when that fails. What is read may be replaced or removed meanwhile.
[[nodiscard]] std::FILE* pOpen(const std::filesystem::path& path, const char* sMode);

// Copies bytes of an open file from a place on, as many as there are up to iWanted; fewer where they can't be read, too. Any
// number of threads at once. On Windows the file's own position is not defined afterwards.
[[nodiscard]] std::size_t iReadAt(std::FILE* pFile, std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept;
// Whether a file that was opened as text gives the bytes that it has.
[[nodiscard]] bool boTextIsPlain() noexcept;

// fseek from the file's begin, for any size.
[[nodiscard]] bool boMoved(std::FILE* pFile, std::uint64_t iPlace) noexcept;

// Gives the file the name of another in one step: who looks sees that one or this one. 0, or errno.
[[nodiscard]] int iReplace(const std::filesystem::path& from, const std::filesystem::path& to);

// Fills in random bytes that nobody can foretell, 256 at most. Throws std::system_error where the system has none.
void vRandomFill(void* pBytes, std::size_t iCount);

// The bytes of stack that a new thread of the process gets; 0 where the system does not say.
[[nodiscard]] OXA_PLATFORM_API std::size_t iThreadStack() noexcept;

// Stops where a debugger watches the process; else nothing.
void vDebugBreak() noexcept;

// Pages of zeros, mapped for the caller alone, of which only those cost memory that are touched. Those that may stay
// empty are kept apart from huge pages, one of which would cost 2 MiB for a byte; those that will be filled begin at a
// multiple of 2 MiB, and get huge pages where the system has such. Null where there is no memory.
enum class Pages { MayStayEmpty, WillBeFilled };
[[nodiscard]] OXA_PLATFORM_API void* pMap(std::size_t iBytes, Pages ePages) noexcept;
// Of what pMap gave, all of it.
OXA_PLATFORM_API void vUnmap(void* pBytes, std::size_t iBytes) noexcept;
// The three below are advice about the whole pages of a range, and nothing happens where a system does not know it.
// vFillSoon: like pages that will be filled, for memory that nothing was written to yet, of whatever kind; those pages, too,
// that the range has a part of.
OXA_PLATFORM_API void vFillSoon(void* pBytes, std::size_t iBytes) noexcept;
OXA_PLATFORM_API void vPopulate(void* pBytes, std::size_t iBytes) noexcept;
OXA_PLATFORM_API void vGiveBack(void* pBytes, std::size_t iBytes) noexcept;

// The processors that the calling thread may run on, in order, and the one that it runs on, by the system's numbers; none
// where the system does not say.
[[nodiscard]] std::vector<unsigned> processors();
[[nodiscard]] std::optional<unsigned> processorNow() noexcept;
// Has the calling thread run on one of them from now on, until the system moves it.
void vMoveTo(unsigned iProcessor) noexcept;

// Removes a file or an empty folder, by a path as the system has it. From the handler of a signal, too.
[[nodiscard]] bool boRemove(const std::filesystem::path::value_type* pPath) noexcept;

}   // namespace oxa::platform
