// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include "Output.h"

#include <cstdio>
#include <utility>

namespace Example {

Output::Output(std::string newName, std::string const& folder, std::string const& titles)
    : name(std::move(newName)), csvFile(folder + "/" + name + ".csv"), pictureFile(folder + "/" + name + ".png") {
    if (MakeFolderOf(csvFile)) {
        csv.open(csvFile);
    }
    csv << titles << '\n';
}

int Output::Finish(Canvas const& picture) {
    csv.close();
    std::printf("\n");
    if (!csv || !picture.Save(pictureFile)) {
        std::fprintf(stderr, "%s: %s and %s could not be written\n", name.c_str(), csvFile.c_str(),
                     pictureFile.c_str());
        return 1;
    }
    std::printf("The measurements are in %s, the picture is in %s\n", csvFile.c_str(), pictureFile.c_str());
    return 0;
}

} // namespace Example
