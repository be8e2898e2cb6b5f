// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/GlobalMessageManager.h"

#include "gentra/util/MessageManager.h"

#include <array>
#include <cstdio>

namespace Gentra {

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
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    return buffer.data();
}

void GlobalMessageManager::OutputMessage(char const* format, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    OutputMessage(Format(format, arguments));
    va_end(arguments);
}

void GlobalMessageManager::OutputMessageOnce(char const* format, ...) {
    if (format == nullptr) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    OutputMessageOnce(Format(format, arguments));
    va_end(arguments);
}

void GlobalMessageManager::OutputMessage(std::string const& text) {
    GlobalManager().OutputMessage(text);
}

void GlobalMessageManager::OutputMessageOnce(std::string const& text) {
    GlobalManager().OutputMessageOnce(text);
}

void GlobalMessageManager::OutputDebugMessage(char const*) {}

void GlobalMessageManager::GetAllMessages(char* buffer, int size) {
    GlobalManager().GetAllMessages(buffer, size);
}

void GlobalMessageManager::ClearAllMessages() {
    GlobalManager().ClearAllMessages();
}

} // namespace Gentra
