// SPDX-License-Identifier: MIT
// The window as assistive programs see it.
#pragma once

// From here on they are told what each window is, and see no widget that only holds or frames others. Called
// once, when the toolkit's application exists.
void DescribeWindowsToAssistivePrograms();
