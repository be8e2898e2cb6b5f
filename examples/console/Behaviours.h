// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#ifndef EXAMPLES_CONSOLE_BEHAVIOURS_H
#define EXAMPLES_CONSOLE_BEHAVIOURS_H

namespace Console {

/// Registers the behaviours that the console brings: Add, Move, Repel.
void RegisterBehaviours();

} // namespace Console

#endif
