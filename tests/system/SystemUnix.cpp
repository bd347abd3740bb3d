// SPDX-License-Identifier: Apache-2.0
// POSIX, with what Linux shows under /proc and /dev.
#include "system/System.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace oxa::test {

namespace fs = std::filesystem;

namespace {

std::size_t iEntries(const char* pFolder) {
    std::error_code error;
    const fs::directory_iterator entries(pFolder, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::string sIfThere(const char* pPath) { return fs::exists(pPath) ? pPath : ""; }

}   // namespace

fs::path newFolder() {
    std::string sPattern = (fs::temp_directory_path() / "oxaifc-XXXXXX").string();
    if (!mkdtemp(sPattern.data())) throw std::runtime_error("no folder for temporary files");
    return sPattern;
}

std::size_t iThreadsNow() { return iEntries("/proc/self/task"); }
std::size_t iOpenFiles() { return iEntries("/proc/self/fd"); }
unsigned iProcessors() { return static_cast<unsigned>(sysconf(_SC_NPROCESSORS_ONLN)); }

std::string sFullDevice() { return sIfThere("/dev/full"); }
std::string sUnreadableFile() { return sIfThere("/proc/self/mem"); }

bool boLink(const fs::path& target, const fs::path& link) {
    fs::create_symlink(target, link);
    return true;
}

bool boFreesOpenNames() { return true; }

bool boTakesName(std::string_view) { return true; }
bool boTakesWord(std::string_view word) { return word.size() < 128 * 1024; }
bool boHasShells() { return true; }
std::string sNoFolderTold() { return "Not a directory"; }

bool boHasRights() { return true; }

Variable::Variable(const char* pName, const char* pValue) : m_sName(pName) {
    if (const char* pBefore = std::getenv(pName)) m_sBefore = pBefore;
    pValue ? setenv(pName, pValue, 1) : unsetenv(pName);
}

Variable::~Variable() { m_sBefore.empty() ? unsetenv(m_sName.c_str()) : setenv(m_sName.c_str(), m_sBefore.c_str(), 1); }

FileLimit::FileLimit(std::size_t iBytes) {
    rlimit before{};
    if (getrlimit(RLIMIT_FSIZE, &before) != 0) return;
    m_iBefore = before.rlim_cur;
    const rlimit small{iBytes, before.rlim_max};
    m_boHolds = setrlimit(RLIMIT_FSIZE, &small) == 0;
}

FileLimit::~FileLimit() {
    rlimit now{};
    if (!m_boHolds || getrlimit(RLIMIT_FSIZE, &now) != 0) return;
    now.rlim_cur = static_cast<rlim_t>(m_iBefore);
    setrlimit(RLIMIT_FSIZE, &now);
}

WithoutRights::WithoutRights(unsigned iRights) : m_iBefore(umask(static_cast<mode_t>(iRights))) {}
WithoutRights::~WithoutRights() { umask(static_cast<mode_t>(m_iBefore)); }

bool boWithPipe(const fs::path& path, std::string_view text, const std::function<void()>& function) {
    if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
    std::thread writer([&] {
        const int iPipe = open(path.c_str(), O_WRONLY);
        while (!text.empty()) {
            const ssize_t iCount = write(iPipe, text.data(), text.size());
            if (iCount <= 0) break;
            text.remove_prefix(static_cast<std::size_t>(iCount));
        }
        close(iPipe);
    });
    function();
    writer.join();
    return true;
}

bool boSilentPipe(const fs::path& path) {
    if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
    return true;
}

BytesLock::BytesLock(const fs::path& path, unsigned long iFirst, unsigned long iCount) {
    const int iFile = open(path.c_str(), O_RDWR);
    flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(iFirst);
    lock.l_len = static_cast<off_t>(iCount);
    m_pFile = reinterpret_cast<void*>(static_cast<std::intptr_t>(iFile));
    m_boHolds = fcntl(iFile, F_SETLK, &lock) == 0;
}

BytesLock::~BytesLock() { close(static_cast<int>(reinterpret_cast<std::intptr_t>(m_pFile))); }

bool boCanBe(OutputKind eOutput) { return eOutput != OutputKind::FullDisk || !sFullDevice().empty(); }

namespace {

// The three streams of a program, as files that are opened in it.
class Streams {
public:
    explicit Streams(const ProgramStart& start) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, 0, start.in.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, 2, start.error.c_str(), O_WRONLY | O_CREAT, 0600);
        switch (start.eOutput) {
        case OutputKind::File:
            posix_spawn_file_actions_addopen(&m_actions, 1, start.out.c_str(), O_WRONLY | O_CREAT, 0600);
            break;
        case OutputKind::ClosedPipe: vClosedPipe(); break;
        case OutputKind::FullDisk:
            posix_spawn_file_actions_addopen(&m_actions, 1, sFullDevice().c_str(), O_WRONLY, 0);
            break;
        case OutputKind::Terminal: vTerminal(); break;
        }
    }
    ~Streams() {
        posix_spawn_file_actions_destroy(&m_actions);
        if (m_iTerminal >= 0) close(m_iTerminal);
        if (m_iPipe >= 0) close(m_iPipe);
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* pActions() const noexcept { return &m_actions; }

    // Blocks until the program has closed it.
    [[nodiscard]] std::string sTerminal() const {
        std::string sText;
        char bytes[4096];
        for (ssize_t iCount = 0; (iCount = read(m_iTerminal, bytes, sizeof bytes)) > 0;)
            sText.append(bytes, static_cast<std::size_t>(iCount));
        return sText;
    }

private:
    void vClosedPipe() {
        int ends[2];
        if (pipe(ends) != 0) throw std::runtime_error("no pipe");
        close(ends[0]);
        m_iPipe = ends[1];
        posix_spawn_file_actions_adddup2(&m_actions, m_iPipe, 1);
    }
    void vTerminal() {
        m_iTerminal = posix_openpt(O_RDWR | O_NOCTTY);
        if (m_iTerminal < 0 || grantpt(m_iTerminal) != 0 || unlockpt(m_iTerminal) != 0)
            throw std::runtime_error("no terminal");
        posix_spawn_file_actions_addopen(&m_actions, 1, ptsname(m_iTerminal), O_WRONLY | O_NOCTTY, 0);
    }

    posix_spawn_file_actions_t m_actions{};
    int m_iTerminal = -1;
    int m_iPipe = -1;
};

// 0 where it does not start.
pid_t iStarted(const ProgramStart& start, const Streams& streams) {
    std::vector<std::string> all{start.sProgram};
    all.insert(all.end(), start.words.begin(), start.words.end());
    std::vector<char*> pointers;
    for (std::string& sWord : all) pointers.push_back(sWord.data());
    pointers.push_back(nullptr);
    pid_t iProcess = 0;
    const int iError =
        posix_spawn(&iProcess, start.sProgram.c_str(), streams.pActions(), nullptr, pointers.data(), environ);
    return iError == 0 ? iProcess : 0;
}

}   // namespace

int iRun(const ProgramStart& start, std::string& sTerminal) {
    const Streams streams(start);
    const pid_t iProcess = iStarted(start, streams);
    if (iProcess == 0) return -1;
    if (start.eOutput == OutputKind::Terminal) sTerminal = streams.sTerminal();
    int iStatus = 0;
    return waitpid(iProcess, &iStatus, 0) == iProcess && WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

bool boCanAsk(EndRequest) { return true; }

ProgramEnd endWhen(const ProgramStart& start, const std::function<bool()>& boReady, EndRequest eRequest) {
    const Streams streams(start);
    const pid_t iProcess = iStarted(start, streams);
    if (iProcess == 0) throw std::runtime_error("the program does not start");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!boReady() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const int iSignal = eRequest == EndRequest::Interrupt ? SIGINT : SIGTERM;
    kill(iProcess, iSignal);
    int iStatus = 0;
    if (waitpid(iProcess, &iStatus, 0) != iProcess) throw std::runtime_error("the program is gone");
    ProgramEnd result;
    if (WIFEXITED(iStatus)) result.iCode = WEXITSTATUS(iStatus);
    if (WIFSIGNALED(iStatus) && WTERMSIG(iStatus) == iSignal) result.eEndedBy = eRequest;
    return result;
}

}   // namespace oxa::test
