// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "platform/framework/afxgdi.h"
#include "tests/support/message_builder.h"

// Pixels of a picture, every 40th of every 30th row.
using Look = std::vector<COLORREF>;

// A message and what becomes of it in time.
struct Walked {
    MessageBuilder message;
    int rate = 0;
    std::vector<int> speechAt;  // the message's frame at which each speech frame sounds
    std::vector<uint8_t> speech;
    std::vector<Look> pictures;
    int length = 0;
};

// records: s speech block, v picture, . stray byte.
Walked Make(int rate, const std::string& records);
