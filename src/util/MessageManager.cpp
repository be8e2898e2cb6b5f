// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "gentra/util/MessageManager.h"

#include <algorithm>

namespace Util {

void MessageManager::OutputMessage(String const& text) {
    messages.push_back(text);
    if (messages.size() > CAPACITY) {
        messages.pop_front();
    }
}

void MessageManager::OutputMessageOnce(String const& text) {
    if (!onceSeen.contains(text)) {
        OutputMessage(text);
        onceSeen.insert(text);
    }
}

void MessageManager::GetAllMessages(char* buffer, int size) const {
    if (size < 1 || buffer == nullptr) {
        return;
    }
    auto const capacity = static_cast<std::size_t>(size);
    constexpr std::size_t lineEnd = 2;
    constexpr std::size_t terminator = 1;

    std::size_t position = 0;
    for (auto message = messages.rbegin(); message != messages.rend(); ++message) {
        if (message->size() + lineEnd + terminator > capacity - position) {
            continue;
        }
        char* end = std::copy(message->begin(), message->end(), buffer + position);
        *end++ = '\r';
        *end++ = '\n';
        position += message->size() + lineEnd;
    }
    buffer[position] = '\0';
}

void MessageManager::ClearAllMessages() {
    messages.clear();
    onceSeen.clear();
}

} // namespace Util
