// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/run_program.h"
#include "tests/support/test_files.h"

using ToolRun = ProgramRun;
ToolRun RunTrvdump(std::vector<std::string> arguments);
ToolRun RunTrvmake(std::vector<std::string> arguments);

// Lower-case hexadecimal SHA-256.
std::string Sha256(const std::vector<uint8_t>& bytes);
