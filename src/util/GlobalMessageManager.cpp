// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/GlobalMessageManager.h"

#include "gentra/util/MessageManager.h"

#include <array>
#include <cstdio>
#include <new>

namespace Gentra {

namespace {

/// Logs, or leaves the message out when there is no memory for it: logging never fails.
template<class Log>
void WhileThereIsMemory(Log const& log) noexcept {
    try {
        log();
    } catch (std::bad_alloc const&) { // NOLINT(bugprone-empty-catch)
    }
}

} // namespace

constinit Util::MessageManager* GlobalMessageManager::globalManager = nullptr;

Util::MessageManager& GlobalMessageManager::GlobalManager() {
    if (globalManager == nullptr) {
        globalManager = new Util::MessageManager;
    }
    return *globalManager;
}

std::string GlobalMessageManager::Format(char const* format, std::va_list arguments) {
    std::array<char, MAX_FORMATTED_LENGTH + 1> buffer{};
    // A format that cannot be converted (bad wide characters) leaves what was written before it.
    static_cast<void>(std::vsnprintf(buffer.data(), buffer.size(), format, arguments));
    return buffer.data();
}

void GlobalMessageManager::OutputMessage(char const* format, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    WhileThereIsMemory([&] { GlobalManager().OutputMessage(Format(format, arguments)); });
    va_end(arguments);
}

void GlobalMessageManager::OutputMessageOnce(char const* format, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    WhileThereIsMemory([&] { GlobalManager().OutputMessageOnce(Format(format, arguments)); });
    va_end(arguments);
}

void GlobalMessageManager::OutputMessage(std::string const& text) {
    WhileThereIsMemory([&] { GlobalManager().OutputMessage(text); });
}

void GlobalMessageManager::OutputMessageOnce(std::string const& text) {
    WhileThereIsMemory([&] { GlobalManager().OutputMessageOnce(text); });
}

void GlobalMessageManager::OutputDebugMessage(char const*) {}

void GlobalMessageManager::GetAllMessages(char* buffer, int size) {
    GlobalManager().GetAllMessages(buffer, size);
}

void GlobalMessageManager::ClearAllMessages() {
    GlobalManager().ClearAllMessages();
}

} // namespace Gentra
