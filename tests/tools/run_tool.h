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

// Messages put together byte by byte.
std::vector<uint8_t> MessageHeader(uint8_t rate, uint32_t frame_count);
void AppendSpeech(std::vector<uint8_t>& message, uint8_t filler);
void AppendVideo(std::vector<uint8_t>& message, unsigned length_field, const std::vector<uint8_t>& payload);
