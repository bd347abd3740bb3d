// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/System.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <io.h>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// after windows.h, whose types it needs
#include <psapi.h>

#include "oxaifc/io/Failure.h"

namespace oxa::tool {

namespace {

HANDLE handleOf(std::FILE* pFile) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(pFile)));   // as invalid as the file
}

std::string sUtf8(std::wstring_view text) {
    const int iText = static_cast<int>(text.size());
    const int iBytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), iText, nullptr, 0, nullptr, nullptr);
    std::string sText(static_cast<std::size_t>(iBytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), iText, sText.data(), iBytes, nullptr, nullptr);
    return sText;
}

// One word of the command line, and the line behind it: blanks end it but within quotes, and a backslash takes from a
// quote behind it what it means. Programs do that here, not shells.
struct Word {
    std::wstring sText;
    bool boQuoted = false;
};
Word wordTaken(std::wstring_view& line) {
    Word word;
    bool boWithin = false;
    std::size_t i = 0;
    for (; i < line.size() && (boWithin || (line[i] != L' ' && line[i] != L'\t')); ++i) {
        const std::size_t iQuote = std::min(line.find_first_not_of(L'\\', i), line.size());
        const std::size_t iBackslashes = iQuote - i;
        if (iQuote == line.size() || line[iQuote] != L'"') {
            word.sText.append(iBackslashes, L'\\');
            if (iBackslashes)
                i = iQuote - 1;
            else
                word.sText += line[i];
            continue;
        }
        word.sText.append(iBackslashes / 2, L'\\');
        i = iQuote;
        if (iBackslashes % 2) {
            word.sText += L'"';
        } else if (boWithin && i + 1 < line.size() && line[i + 1] == L'"') {
            word.sText += line[i++];   // two of them within are one
        } else {
            boWithin = !boWithin;
            word.boQuoted = true;
        }
    }
    line.remove_prefix(i);
    line.remove_prefix(std::min(line.find_first_not_of(L" \t"), line.size()));
    return word;
}

// The files that an unquoted word with "*" or "?" stands for, in the order of their names; the word itself where there
// are none. Shells do that elsewhere.
void vExpand(const Word& word, std::vector<std::string>& words) {
    const std::size_t iName = word.sText.find_last_of(L"/\\:") + 1;
    std::vector<std::string> found;
    if (!word.boQuoted && word.sText.find_first_of(L"*?", iName) != std::wstring::npos) {
        WIN32_FIND_DATAW data{};
        const HANDLE handle = FindFirstFileW(word.sText.c_str(), &data);
        for (BOOL boOne = handle != INVALID_HANDLE_VALUE; boOne; boOne = FindNextFileW(handle, &data))
            if (data.cFileName[0] != L'.') found.push_back(sUtf8(word.sText.substr(0, iName) + data.cFileName));
        if (handle != INVALID_HANDLE_VALUE) FindClose(handle);
    }
    std::ranges::sort(found);
    if (found.empty()) found.push_back(sUtf8(word.sText));
    words.insert(words.end(), found.begin(), found.end());
}

// The window belongs to the shell, which gets back what it had.
UINT g_iInputPage = 0;
UINT g_iOutputPage = 0;

void vPagesBack() {
    if (g_iInputPage) SetConsoleCP(g_iInputPage);
    if (g_iOutputPage) SetConsoleOutputCP(g_iOutputPage);
}

void vUtf8Terminal() {
    if (boIsTerminal(stdin)) {
        g_iInputPage = GetConsoleCP();
        SetConsoleCP(CP_UTF8);
    }
    if (boIsTerminal(stdout) || boIsTerminal(stderr)) {
        g_iOutputPage = GetConsoleOutputCP();
        SetConsoleOutputCP(CP_UTF8);
    }
    std::atexit(vPagesBack);
}

}   // namespace

std::vector<std::string> wordsAtStart(int iCount, char** ppWords) {
    for (std::FILE* pFile : {stdin, stdout, stderr})
        if (pFile != stdin || !boIsTerminal(stdin)) _setmode(_fileno(pFile), _O_BINARY);   // else Ctrl-Z is no end
    // A character must not be cut in two on its way to a terminal: what is written at once stays together.
    if (boIsTerminal(stdout)) std::setvbuf(stdout, nullptr, _IONBF, 0);
    vUtf8Terminal();
    // Not those that main() got, which are in the code page of the machine.
    std::wstring_view line = GetCommandLineW();
    if (line.empty()) return {ppWords, ppWords + iCount};
    std::vector<std::string> words{sUtf8(wordTaken(line).sText)};
    while (!line.empty()) vExpand(wordTaken(line), words);
    return words;
}

bool boShowsColours(std::FILE* pFile) {
    DWORD iMode = 0;
    return boIsTerminal(pFile) && GetConsoleMode(handleOf(pFile), &iMode) &&
           SetConsoleMode(handleOf(pFile), iMode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

bool boIsStandardInput(const std::filesystem::path& path) {
    BY_HANDLE_FILE_INFORMATION input{}, file{};
    if (!GetFileInformationByHandle(handleOf(stdin), &input)) return false;
    const HANDLE handle = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    const bool boKnown = GetFileInformationByHandle(handle, &file);
    CloseHandle(handle);
    return boKnown && input.dwVolumeSerialNumber == file.dwVolumeSerialNumber &&
           input.nFileIndexHigh == file.nFileIndexHigh && input.nFileIndexLow == file.nFileIndexLow;
}

// Not _isatty, for which NUL is one too.
bool boIsTerminal(std::FILE* pFile) {
    DWORD iMode = 0;
    return GetConsoleMode(handleOf(pFile), &iMode) != 0;
}

std::size_t iTerminalWidth(std::FILE* pFile) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(handleOf(pFile), &info) || info.srWindow.Right < info.srWindow.Left) return 80;
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left) + 1;
}

std::uint64_t iPeakMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    return GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) ? counters.PeakWorkingSetSize : 0;
}

void vIgnoreWriteSignals() {}   // there are none

// C libraries here have no name for that error.
bool boReaderGone(int iError) noexcept {
    return iError == EPIPE || (iError == EINVAL && GetFileType(handleOf(stdout)) == FILE_TYPE_PIPE);
}

void vWithoutStandardError(const std::function<void()>& function) {
    struct Restore {
        int iBefore = _dup(_fileno(stderr));
        ~Restore() {
            std::fflush(stderr);
            if (iBefore < 0) return;
            _dup2(iBefore, _fileno(stderr));
            _close(iBefore);
        }
    };
    const Restore restore;
    const int iNowhere = _open("NUL", _O_WRONLY);
    if (restore.iBefore >= 0 && iNowhere >= 0) _dup2(iNowhere, _fileno(stderr));
    if (iNowhere >= 0) _close(iNowhere);
    function();
}

namespace {

void (*g_pEnd)() = nullptr;
std::atomic<void (*)()> g_pInterrupt{nullptr};
std::string g_sLate;   // the line of vEndAfter

void vLineWrite(std::string_view text) {
    DWORD iWritten = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &iWritten, nullptr);
}

// The system calls it on a thread of its own, and ends the program unless it is told that the event was handled.
BOOL WINAPI boEvent(DWORD iEvent) {
    void (*const pFunction)() = iEvent == CTRL_C_EVENT ? g_pInterrupt.exchange(nullptr) : nullptr;
    if (pFunction) {
        pFunction();
        return TRUE;
    }
    if (iEvent == CTRL_C_EVENT) vLineWrite("oxaifc: interrupted\n");
    g_pEnd();
    return FALSE;
}

VOID CALLBACK vLate(PVOID, BOOLEAN) {
    vLineWrite(g_sLate);
    g_pEnd();
    ExitProcess(g_iExitFailure);
}

}   // namespace

void vOnEnd(void (*pFunction)()) {
    g_pEnd = pFunction;
    SetConsoleCtrlHandler(boEvent, TRUE);
}

void vEndAfter(double seconds, std::string line) {
    static HANDLE handle = nullptr;
    if (handle) static_cast<void>(DeleteTimerQueueTimer(nullptr, std::exchange(handle, nullptr), INVALID_HANDLE_VALUE));
    if (seconds <= 0) return;
    g_sLate = std::move(line) + "\n";
    const double milliseconds = std::min(seconds * 1000, 4e9);
    if (!CreateTimerQueueTimer(&handle, nullptr, vLate, nullptr, static_cast<DWORD>(milliseconds), 0,
                               WT_EXECUTEONLYONCE))
        handle = nullptr;
}

// A read of the terminal ends by itself there.
void vOnInterrupt(void (*pFunction)(), bool) { g_pInterrupt = pFunction; }

}   // namespace oxa::tool
