// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef GENTRA_UTIL_GLOBALMESSAGEMANAGER_H
#define GENTRA_UTIL_GLOBALMESSAGEMANAGER_H

#include "gentra/gentra_export.h"

#include <cstdarg>
#include <string>

/// Lets compilers compare a format with what follows it; positions are counted from 1.
#if defined(__GNUC__)
#define GENTRA_PRINTF_ARGUMENTS(formatIndex, firstIndex) __attribute__((format(printf, formatIndex, firstIndex)))
#else
#define GENTRA_PRINTF_ARGUMENTS(formatIndex, firstIndex)
#endif

namespace Util {
class MessageManager;
}

namespace Gentra {

/// The one message log of the process, in which the library reports all progress and every error.
///
/// The log is created on first use and lives until the process ends. Operations that are not described here
/// forward to Util::MessageManager; see there.
class GENTRA_EXPORT GlobalMessageManager {
public:
    /// The longest message that a format can produce, in characters; longer ones are cut.
    static constexpr std::size_t MAX_FORMATTED_LENGTH = 1023;

    /// Does nothing: there is no state to copy.
    GlobalMessageManager& operator=(GlobalMessageManager const&) noexcept { return *this; }

    /// Formats as `printf` does, then logs the result. A null format logs nothing.
    static void OutputMessage(char const* format, ...) GENTRA_PRINTF_ARGUMENTS(1, 2);
    /// The same once per formatted text.
    static void OutputMessageOnce(char const* format, ...) GENTRA_PRINTF_ARGUMENTS(1, 2);
    /// Logs the text as it stands; a % in it is an ordinary character.
    static void OutputMessage(std::string const& text);
    /// The same once per text.
    static void OutputMessageOnce(std::string const& text);
    /// Does nothing; a place for a debugger's breakpoint.
    static void OutputDebugMessage(char const* text);

    /// @{
    /// Does what the operation of that name of Util::MessageManager does.
    static void GetAllMessages(char* buffer, int size);
    static void ClearAllMessages();
    /// @}

private:
    [[nodiscard]] static Util::MessageManager& GlobalManager();
    [[nodiscard]] static std::string Format(char const* format, std::va_list arguments);

    static Util::MessageManager* globalManager; ///< Never destroyed, so that late destructors still find it.
};

} // namespace Gentra

#endif
