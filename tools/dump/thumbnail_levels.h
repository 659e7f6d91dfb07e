// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

namespace tools {

// The levels of a message of speech alone, 0 to 1, in the order of time: the peak of each 20 ms frame of a
// short message, and of frames spread evenly over a longer one. At most 128 places of the file are read.
// Places where no speech is found are left out. `descriptor` is open for reading; its position is neither
// used nor moved.
std::vector<float> SampleLevels(int descriptor);

// The highest level of each of `parts` equal parts of the levels. With fewer levels than parts, a level
// counts for every part that it reaches into. Empty for no levels.
std::vector<float> LoudestPerPart(const std::vector<float>& levels, std::size_t parts);

}  // namespace tools
