// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_SUPPORT_OUTPUT_H
#define EXAMPLES_SUPPORT_OUTPUT_H

#include "Canvas.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <string>

namespace Example {

/// Refuses numbers that are none, which CLI::Range lets pass.
[[nodiscard]] CLI::Validator Finite();

/// What an experiment leaves behind: measurements as NAME.csv and a picture as NAME.png in one folder.
class Output {
public:
    /// Makes the folder and begins the table with a row of titles.
    Output(std::string newName, std::string const& folder, std::string const& titles);

    /// Whether the table can be written; else says so.
    [[nodiscard]] bool CanWrite() const;
    /// The table, to be written row by row.
    std::ofstream& Rows() { return csv; }
    /// Writes the picture and says where both are, or what could not be written. The program's exit code.
    [[nodiscard]] int Finish(Canvas const& picture);

private:
    [[nodiscard]] int Fail() const;

    std::string name;
    std::string csvFile;
    std::string pictureFile;
    std::ofstream csv;
};

} // namespace Example

#endif
