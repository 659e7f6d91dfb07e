#include "app/player_app.h"
#include "platform/sound/system_sound.h"
#include "res/player_resources.h"

namespace {

CPlayerApp theApp;

}  // namespace

int main(int argc, char** argv) {
    UseSystemSound();
    UsePlayerResources();
    return AfxWinMain(argc, argv);
}
