// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Output.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace Example {

CLI::Validator Finite() {
    return CLI::Validator(
        [](std::string& text) {
            return std::isfinite(std::strtod(text.c_str(), nullptr)) ? std::string() : text + " is not finite";
        },
        "FINITE");
}

Output::Output(std::string newName, std::string const& folder, std::string const& titles)
    : name(std::move(newName)), csvFile((std::filesystem::path(folder) / (name + ".csv")).string()),
      pictureFile((std::filesystem::path(folder) / (name + ".png")).string()) {
    if (MakeFolderOf(csvFile)) {
        csv.open(csvFile);
    }
    csv << titles << '\n';
}

bool Output::CanWrite() const {
    return csv.is_open() || Fail() == 0;
}

int Output::Fail() const {
    std::fprintf(stderr, "%s: %s and %s could not be written\n", name.c_str(), csvFile.c_str(), pictureFile.c_str());
    return 1;
}

int Output::Finish(Canvas const& picture) {
    csv.close();
    std::printf("\n");
    if (!csv || !picture.Save(pictureFile)) {
        return Fail();
    }
    std::printf("The measurements are in %s, the picture is in %s\n", csvFile.c_str(), pictureFile.c_str());
    return 0;
}

} // namespace Example
