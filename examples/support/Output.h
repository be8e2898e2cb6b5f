// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_SUPPORT_OUTPUT_H
#define EXAMPLES_SUPPORT_OUTPUT_H

#include "Canvas.h"

#include <fstream>
#include <string>

namespace Example {

/// What an experiment leaves behind: measurements as NAME.csv and a picture as NAME.png in one folder.
class Output {
public:
    /// Makes the folder and begins the table with a row of titles.
    Output(std::string newName, std::string const& folder, std::string const& titles);

    /// The table, to be written row by row.
    std::ofstream& Rows() { return csv; }
    /// Writes the picture and says where both are, or what could not be written. The program's exit code.
    [[nodiscard]] int Finish(Canvas const& picture);

private:
    std::string name;
    std::string csvFile;
    std::string pictureFile;
    std::ofstream csv;
};

} // namespace Example

#endif
