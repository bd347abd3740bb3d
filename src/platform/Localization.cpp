// SPDX-License-Identifier: Apache-2.0
// Texts in the language of the user. Tables are linked into one list and never taken out, so a look-up needs no lock;
// the newest comes first, so that a program can replace a library's text.
#include "platform/Localization.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace oxa {

namespace {

std::atomic<Language> g_language{Language::English};

// Newest first. Grows only, so that it is read without a lock.
constinit std::atomic<const LocalizedTexts*> g_pFirst{nullptr};

// Held while one is put in, by initialisers of other sources too. Not each library makes a mutex before those run.
std::mutex& mutexOfList() {
    static std::mutex s_mutex;
    return s_mutex;
}

}   // namespace

void setLanguage(Language language) noexcept { g_language.store(language, std::memory_order_relaxed); }

Language language() noexcept { return g_language.load(std::memory_order_relaxed); }

// Reaches into the tables, which show nothing of themselves.
struct TextList {
    // Calls take(texts) for each table of a domain, newest first, until it returns true.
    template <class Take>
    static void vForEach(std::string_view domain, Take&& take) {
        for (const auto* p = g_pFirst.load(std::memory_order_acquire); p; p = p->m_pNext)
            if (p->m_domain == domain && take(p->m_texts)) return;
    }

    // A table that is in the list already stays where it is.
    static void vAdd(LocalizedTexts& texts) {
        const std::lock_guard lock(mutexOfList());
        const LocalizedTexts* const pFirst = g_pFirst.load(std::memory_order_relaxed);
        for (const auto* p = pFirst; p; p = p->m_pNext)
            if (p == &texts) return;
        texts.m_pNext = pFirst;
        g_pFirst.store(&texts, std::memory_order_release);
    }
};

void registerTexts(LocalizedTexts& texts) { TextList::vAdd(texts); }

std::string localize(std::string_view domain, std::string_view key) {
    std::string_view text = key;
    TextList::vForEach(domain, [&](std::span<const LocalizedText> texts) {
        const auto row = std::ranges::lower_bound(texts, key, {}, &LocalizedText::key);
        if (row == texts.end() || row->key != key) return false;
        text = language() == Language::German ? row->german : row->english;
        return true;
    });
    return std::string(text);
}

std::vector<std::string_view> localizationKeys(std::string_view domain) {
    std::vector<std::string_view> keys;
    TextList::vForEach(domain, [&keys](std::span<const LocalizedText> texts) {
        for (const LocalizedText& row : texts) keys.push_back(row.key);
        return false;
    });
    std::ranges::sort(keys);
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

}   // namespace oxa
