// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string_view>

#include "app/player_app.h"
#include "platform/sound/system_sound.h"
#include "res/player_resources.h"

namespace {

constexpr const char* kUsage =
    "usage: trvplayer [MESSAGE...]\n"
    "Opens the player's window and plays each MESSAGE, a .trv file, one after the other. A player that runs\n"
    "already is closed.\n"
    "  -h, --help   print this and end\n"
    "  --version    print the version and end\n";

CPlayerApp theApp;

}  // namespace

int main(int argc, char** argv) {
    // Answered first of all: these need no display and no sound.
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "-h" || word == "--help") return std::fputs(kUsage, stdout) < 0 ? 1 : 0;
        if (word == "--version") return std::puts("trvplayer " TRV_VERSION) < 0 ? 1 : 0;
    }
    UseSystemSound();
    UsePlayerResources();
    return AfxWinMain(argc, argv);
}
