// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_SRC_UTIL_FIRSTEXCEPTION_H
#define GENTRA_SRC_UTIL_FIRSTEXCEPTION_H

#include <exception>

namespace Util {

/// Carries out several steps of which each may throw: none keeps the later ones from being done, and what the first one
/// threw is thrown on in the end.
class FirstException {
public:
    template<class Step>
    void During(Step const& step) noexcept {
        try {
            step();
        } catch (...) {
            if (first == nullptr) {
                first = std::current_exception();
            }
        }
    }
    [[nodiscard]] bool HasOccurred() const noexcept { return first != nullptr; }
    void ThrowOn() const {
        if (first != nullptr) {
            std::rethrow_exception(first);
        }
    }

private:
    std::exception_ptr first;
};

} // namespace Util

#endif
