// SPDX-License-Identifier: Apache-2.0
// Assertions: the handler of the thread first, then that of the process, then the standard error stream.
#include "platform/Assert.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace oxa {

namespace {

std::mutex g_mutex;                                // guards g_pHandler
std::shared_ptr<const AssertHandler> g_pHandler;   // null: the default

std::shared_ptr<const AssertHandler> pHandlerGet() {
    const std::lock_guard lock(g_mutex);
    return g_pHandler;
}

// One line, whatever the texts hold: they may quote a file, line feeds and terminal controls included.
void vWriteLine(const AssertInfo& info) {
    std::string sLine = "Assert in ";
    sLine.append(info.function).append(" (").append(info.source).append(", line ");
    sLine.append(std::to_string(info.iLine)).append("): ").append(info.text);
    for (char& c : sLine)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    sLine.push_back('\n');
    std::fwrite(sLine.data(), 1, sLine.size(), stderr);
}

}   // namespace

#if defined(NDEBUG)
std::atomic<bool> Assert::g_boEnabled{false};
#else
std::atomic<bool> Assert::g_boEnabled{true};
#endif

AssertFunctionOne::Scope::Scope(AssertFunctionOne& owner, AssertHandler former)
    : m_owner(owner),
      m_former(std::move(former)) {}

AssertFunctionOne::Scope::~Scope() { m_owner.m_handler.swap(m_former); }

AssertFunctionOne::Scope AssertFunctionOne::registerHandler(AssertHandler handler) {
    m_handler.swap(handler);
    return {*this, std::move(handler)};
}

AssertFunctionOne& Assert::getRegisteredForCurrentThread() noexcept {
    thread_local AssertFunctionOne t_one;
    return t_one;
}

void Assert::setHandler(AssertHandler handler) {
    std::shared_ptr<const AssertHandler> pHandler;
    if (handler) pHandler = std::make_shared<const AssertHandler>(std::move(handler));
    const std::lock_guard lock(g_mutex);
    // Swapped, so that the former handler dies behind the lock: what it owns may assert in turn.
    g_pHandler.swap(pHandler);
}

void Assert::addAssert(std::string_view source, std::string_view function, std::string_view text, int iLine) {
    const AssertInfo info{source, function, text, iLine};
    // What is called is held by this call: the handler may put another one in its place.
    if (const AssertHandler handler = getRegisteredForCurrentThread().handler()) return handler(info);
    if (const auto pHandler = pHandlerGet()) return (*pHandler)(info);
    vWriteLine(info);
}

}   // namespace oxa
