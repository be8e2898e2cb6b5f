// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_TESTS_SUPPORT_MESSAGELOG_H
#define GENTRA_TESTS_SUPPORT_MESSAGELOG_H

#include <gentra/util/GlobalMessageManager.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Support {

/// Empties the process's message log and reads what has come since.
class MessageLog {
public:
    MessageLog() { Gentra::GlobalMessageManager::ClearAllMessages(); }

    /// All messages, oldest first.
    static std::vector<std::string> All() {
        std::string buffer(256 * 1024, '\0');
        Gentra::GlobalMessageManager::GetAllMessages(buffer.data(), static_cast<int>(buffer.size()));
        buffer.resize(buffer.find('\0'));
        std::vector<std::string> messages;
        for (std::size_t start = 0; start < buffer.size();) {
            std::size_t const end = buffer.find("\r\n", start);
            messages.push_back(buffer.substr(start, end - start));
            start = end + 2;
        }
        std::reverse(messages.begin(), messages.end());
        return messages;
    }

    /// All messages since the last call, oldest first.
    static std::vector<std::string> Take() {
        std::vector<std::string> messages = All();
        Gentra::GlobalMessageManager::ClearAllMessages();
        return messages;
    }
};

using Messages = std::vector<std::string>;

} // namespace Support

#endif
