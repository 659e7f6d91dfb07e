// SPDX-License-Identifier: MIT
// What a sound server plays after seeks is what the message decodes to from there.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <span>

#include "platform/sound/sound_drivers.h"
#include "platform/sound/system_sound.h"
#include "tests/platform/sound/private_server.h"
#include "tests/playback/player_fixture.h"

namespace {

TEST(PanelMonitor, EachSeekIsHeardFromExactlyItsFrame) {
    PrivateServer server;
    UseSystemSound();
    const MessageBuilder message = MessageBuilder(0, 3000).Speech(300);
    const std::vector<int16_t> decoded = message.Samples();
    {
        const HeadlessToolkit toolkit;
        const TestFolder folder;
        CWinApp app;
        TestMainWindow main;
        app.m_pMainWnd = &main;
        const std::string path = folder.Path("message.trv");
        message.Write(path);
        ASSERT_TRUE(main.panel->Open(path));
        main.panel->Play();
        const MonitorRecording recording;
        std::mt19937 random(1);
        std::size_t from = 0;
        for (int i = 0; i < 5; ++i) {
            const int frame = static_cast<int>(random() % 2900);
            SCOPED_TRACE(frame);
            main.panel->SeekTo(frame);
            const auto expected =
                std::span(decoded).subspan(static_cast<std::size_t>(frame) * kSpeechFrameSamples, 1600);
            EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] {
                const std::vector<int16_t> heard = recording.Samples();
                const auto found = std::search(heard.begin() + static_cast<std::ptrdiff_t>(from), heard.end(),
                                               expected.begin(), expected.end());
                if (found == heard.end()) return false;
                from = static_cast<std::size_t>(found - heard.begin()) + expected.size();
                return true;
            }));
        }
        main.DestroyWindow();
    }
    SetSoundDrivers(nullptr, nullptr);
}

}  // namespace
