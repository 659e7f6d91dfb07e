// SPDX-License-Identifier: MIT
// What WM_DROPFILES carries; belongs to the toolkit's side while the message is handled.
#pragma once

#include <string>
#include <vector>

struct DroppedFiles {
    std::vector<std::string> paths;
};
