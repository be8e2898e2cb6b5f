// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

// Whether a plug-in's file fits this library.

#include "gentra/behaviours/PlugIn.h"

#include <charconv>
#include <optional>

namespace Gentra {

namespace {

struct Stamp {
    int major;
    int minor;
    int pointerSize;
    bool checked;
};

/// Takes `expected` away from the beginning of `text`, if it is there.
bool Take(std::string_view& text, std::string_view expected) {
    bool const isThere = text.starts_with(expected);
    text.remove_prefix(isThere ? expected.size() : 0);
    return isThere;
}

bool Take(std::string_view& text, int& number) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() && number >= 0;
}

/// The first stamp. The words alone may be anywhere, in this library for one, so what follows them counts too.
std::optional<Stamp> FindStamp(std::string_view file) {
    constexpr std::string_view WORDS = "Gentra plug-in: version ";
    for (std::size_t at = file.find(WORDS); at != std::string_view::npos; at = file.find(WORDS, at + 1)) {
        std::string_view text = file.substr(at + WORDS.size());
        Stamp stamp;
        if (Take(text, stamp.major) && Take(text, ".") && Take(text, stamp.minor) && Take(text, ", pointers of ") &&
            Take(text, stamp.pointerSize) && Take(text, " bytes, ")) {
            stamp.checked = Take(text, "checked");
            return stamp;
        }
    }
    return {};
}

std::string Version(int major, int minor) {
    return "Gentra " + std::to_string(major) + "." + std::to_string(minor);
}

} // namespace

std::string PlugIn::WhyRefused(std::string_view file) {
    std::optional<Stamp> const stamp = FindStamp(file);
    if (!stamp) {
        return "it is no Gentra plug-in";
    }
    if (stamp->major != GENTRA_VERSION_MAJOR || stamp->minor > GENTRA_VERSION_MINOR) {
        return "it was built with " + Version(stamp->major, stamp->minor) + ", but this is " +
               Version(GENTRA_VERSION_MAJOR, GENTRA_VERSION_MINOR);
    }
    if (stamp->pointerSize != GENTRA_POINTER_SIZE) {
        return "it was built for pointers of " + std::to_string(stamp->pointerSize) +
               " bytes, but this is a program with " + std::to_string(GENTRA_POINTER_SIZE);
    }
    if (stamp->checked != (GENTRA_CHECKED == 1)) {
        return stamp->checked ? "it was built to check accesses, but this Gentra does not"
                              : "it was built without checks of accesses, but this Gentra makes them";
    }
    return {};
}

} // namespace Gentra
