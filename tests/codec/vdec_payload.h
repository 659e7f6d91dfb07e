// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "codec/vdec_stages.h"

// A payload whose blocks `coded` (0 to 299) have details, all other positions skipped. `next_value` returns
// the values in the order of the payload.
std::vector<uint8_t> MakePayload(const std::set<int>& coded,
                                 const std::function<int(VdecGroup group)>& next_value);

// A payload with random values in all groups and about `coded` of 300 block positions coded. Larger `spread`
// gives larger values and longer codes, and so a busier picture.
std::vector<uint8_t> RandomPayload(uint32_t seed, int coded, double spread);

// Codes for every test of a program.
const VdecCodes& SharedCodes();
