// SPDX-License-Identifier: MIT
#include "res/player_resources.h"

#include "platform/framework/resources.h"

extern "C" {
extern const unsigned char player_res_begin[];
extern const unsigned char player_res_end[];
}

void UsePlayerResources() {
    resources::Use(player_res_begin, static_cast<std::size_t>(player_res_end - player_res_begin));
}
