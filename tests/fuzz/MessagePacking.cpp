// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// A message log against a literal model, read into buffers of any size.

#include "Fuzzing.h"

#include <algorithm>
#include <deque>
#include <set>
#include <string>
#include <vector>

namespace {

struct Model {
    std::deque<std::string> messages;
    std::set<std::string> seen;

    void Output(std::string const& text) {
        messages.push_back(text);
        if (messages.size() > 128) {
            messages.pop_front();
        }
    }
    [[nodiscard]] std::string Read(std::size_t size) const {
        std::string all;
        for (auto each = messages.rbegin(); each != messages.rend(); ++each) {
            if (all.size() + each->size() + 3 <= size) {
                all += *each + "\r\n";
            }
        }
        return all;
    }
};

} // namespace

void Fuzz(std::span<unsigned char const> bytes) {
    Util::MessageManager log;
    Model model;
    while (bytes.size() >= 2) {
        unsigned int const operation = bytes[0] % 8;
        std::size_t const count = bytes[1];
        bytes = bytes.subspan(2);
        std::string const text(bytes.begin(),
                               bytes.begin() + static_cast<std::ptrdiff_t>(std::min(count, bytes.size())));
        if (operation == 0) {
            log.ClearAllMessages();
            model = {};
        } else if (operation < 3) {
            // A buffer of exactly that size, so that a byte more would be noticed.
            std::vector<char> buffer(count * operation);
            log.GetAllMessages(buffer.data(), static_cast<int>(buffer.size()));
            std::string const expected = model.Read(buffer.size());
            Require(buffer.empty() || std::equal(expected.begin(), expected.end(), buffer.begin()), "packed messages");
            Require(buffer.empty() || buffer[expected.size()] == '\0', "the end of the packed messages");
            continue;
        } else if (operation < 6) {
            log.OutputMessage(text);
            model.Output(text);
        } else {
            log.OutputMessageOnce(text);
            if (model.seen.insert(text).second) {
                model.Output(text);
            }
        }
        bytes = bytes.subspan(text.size());
    }
}
