#pragma once

class QVBoxLayout;

namespace velicor {

class UpdateChecker;

// Fills the update window's stack, from top to bottom, with what belongs to the checker's phase.
void fillUpdateContent(QVBoxLayout& stack, UpdateChecker& checker);

}  // namespace velicor
