// Windows in tests: a program linked with ui_test_main runs its tests with the real toolkit on the
// off-screen platform (unless QT_QPA_PLATFORM says otherwise) and with the player's resources.
#pragma once

#include <functional>

namespace ui {

// Runs the message loop for so long.
void PumpFor(int milliseconds);
// Runs it until the condition holds: true, or false when the time is over first.
bool PumpUntil(const std::function<bool()>& condition, int milliseconds = 5000);
// Delivers what has been posted so far and paints what waits.
void PumpPosted();

}  // namespace ui
